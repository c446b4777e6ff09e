package standin.aidltest;

@Backing(type="int")
enum Level {
    LOW = 1,
    MIDDLE = 1 << 4,
    SAME = MIDDLE,
    HIGH = LOW | MIDDLE | 0x100,
}
