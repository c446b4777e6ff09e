package standin.aidltest;

/** One field of each kind. */
@VintfStability
parcelable RecordV2 {
    String[] texts;
    double[] fines;
    float ratio;
    int added = 1 << 20;
    boolean flag = true;
    byte small = -128;
    long least = -9223372036854775807;
}
