package standin.aidltest;

import standin.aidltest.inner.Wide;

/** One field of each kind that can have a default. */
parcelable Defaults {
    boolean flag = true;
    byte small = -3;
    char letter = 'x';
    int number = 1 << 20;
    long big = 0x123456789aL;
    float ratio = 0.5;
    double fine = -2;
    String text = "two \"words\"\n";
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
