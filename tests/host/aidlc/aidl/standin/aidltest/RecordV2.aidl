package standin.aidltest;

/** RecordV1 later; with it, the kinds of fields that the packages do not have. */
@VintfStability
parcelable RecordV2 {
    int number;
    String text;
    int added = 1 << 20;
    boolean flag = true;
    byte small = -128;
    long least = -9223372036854775807;
    double fine;
    long[] bigs;
    float[] ratios;
    double[] fines;
    String[] texts;
}
