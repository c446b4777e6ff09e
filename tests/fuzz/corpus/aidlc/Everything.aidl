package standin.aidltest;

import standin.aidltest.inner.Point;
import standin.aidltest.inner.Wide;

/** One field of each kind that needs no object in the parcel. */
parcelable Everything {
    boolean flag;
    byte small;
    char letter;
    int number;
    long big;
    float ratio;
    double fine;
    String text;
    Level level;
    Tiny tiny;
    Wide wide;
    Point point;
    Choice choice;
    boolean[] flags;
    byte[] bytes;
    char[] letters;
    int[] numbers;
    long[] bigs;
    float[] ratios;
    double[] fines;
    String[] texts;
    Level[] levels;
    Tiny[] tinies;
    Wide[] wides;
    Point[] points;
    Choice[] choices;
    byte[5] fixedBytes;
    Point[2] fixedPoints;
    List<String> textList;
    List<Point> pointList;
    @nullable String maybeText;
    @nullable Point maybePoint;
    @nullable int[] maybeNumbers;
    @nullable String[] maybeTexts;
    @nullable Point[] maybePoints;
    @nullable byte[2] maybeFixed;
    int last;
}
