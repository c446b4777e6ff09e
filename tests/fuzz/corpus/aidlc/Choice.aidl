package standin.aidltest;

import standin.aidltest.inner.Point;

union Choice {
    int number = 7;
    String text;
    Point point;
    Level[] levels = {Level.HIGH};
    double[2] pair;
}
