package standin.aidltest;

/** One field of each kind that the packages do not have. */
@VintfStability
parcelable Kinds {
    byte small;
    double fine;
    long[] bigs;
    float[] ratios;
    double[] fines;
    String[] texts;
}
