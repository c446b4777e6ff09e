package standin.aidltest;

parcelable RecordV2 {
    int number;
    String text;
    int added = 42;
    int[] more = {1};
}
