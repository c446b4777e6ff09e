package standin.aidltest;

/** RecordV2 before its last two fields were added. */
parcelable RecordV1 {
    int number;
    String text;
}
