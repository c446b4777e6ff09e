package standin.aidltest;

import standin.aidltest.inner.Wide;

/** One field of each kind that can have a default. */
parcelable Defaults {
    boolean flag = true;
    byte small = -3;
    char letter = 'x';
    char quote = '\'';
    char euro = '\u20ac';
    int number = 1 << 20;
    long big = 0x123456789aL;
    float ratio = 0.5;
    float[] ratios = {1f, --1.5, -.5e+1, 16777217};
    double fine = -2;
    double[] fines = {1e300, 0.1, -0.0};
    String text = "two \"words\"\n\u20ac";
    Level level = Level.HIGH;
    Wide wide = Wide.SECOND;
    int[] numbers = {1, -2, 0x7fffffff};
    byte[] bytes = {1, -1};
    String[] words = {"a", "b"};
    Level[] levels = {Level.LOW, Level.SAME};
    int[3] fixed = {7, 8, 9};
    int[2] zeros;
    Tiny tiny;
}
