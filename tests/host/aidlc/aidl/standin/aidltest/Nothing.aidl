package standin.aidltest;

parcelable Nothing {
}
