package standin.aidltest;

@VintfStability
union Choice {
    int number = 7;
    String text;
    RecordV1 record;
    Level[] levels;
}
