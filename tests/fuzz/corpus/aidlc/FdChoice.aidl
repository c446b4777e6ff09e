package standin.aidltest;

union FdChoice {
    boolean none;
    ParcelFileDescriptor fd;
}
