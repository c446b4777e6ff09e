package standin.aidltest;

@VintfStability
@Backing(type="int")
enum Level {
    LOW = 1,
    MIDDLE = LOW << 4,
    SAME = 0x10,
    NEXT,
    HIGH = LOW | MIDDLE | 0x100,
}
