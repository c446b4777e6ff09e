package android.hardware.common;

// Descriptors and integers that together name a buffer, a fence or the like; both empty: none.
@VintfStability
parcelable NativeHandle {
    ParcelFileDescriptor[] fds;
    int[] ints;
}
