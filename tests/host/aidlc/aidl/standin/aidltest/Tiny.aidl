package standin.aidltest;

enum Tiny {
    ZERO,
    ONE,
    MINUS = -1,
}
