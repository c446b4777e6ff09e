package standin.aidltest.inner;

parcelable Point {
    int x;
    int y;
}
