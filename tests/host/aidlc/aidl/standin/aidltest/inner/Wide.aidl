package standin.aidltest.inner;

@Backing(type="long")
enum Wide {
    FIRST = 1L << 40,
    SECOND,
}
