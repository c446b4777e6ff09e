package android.hardware.camera.device;

// Says when a capture was exposed.
@VintfStability
parcelable ShutterMsg {
    int frameNumber;

    // Start of exposure, in nanoseconds.
    long timestamp;

    // Start of readout, in nanoseconds.
    long readoutTimestamp;
}
