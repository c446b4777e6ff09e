package standin.aidltest;

/** RecordV2 before its last fields were added. */
@VintfStability
parcelable RecordV1 {
    int number;
    String text;
}
