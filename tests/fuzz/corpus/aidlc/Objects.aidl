package standin.aidltest;

/** What travels as objects beside the bytes. */
parcelable Objects {
    ParcelFileDescriptor fd;
    ParcelFileDescriptor[] fds;
    @nullable ParcelFileDescriptor maybeFd;
    IBinder binder;
    @nullable IBinder maybeBinder;
    IWorker worker;
    FdChoice choice;
}
