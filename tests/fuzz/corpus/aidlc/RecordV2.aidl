package standin.aidltest;

@VintfStability
parcelable RecordV2 {
    int number;
    String text;
    int added = 1 << 20;
    boolean flag = true;
    byte small = -128;
    long least = -9223372036854775807;
}
