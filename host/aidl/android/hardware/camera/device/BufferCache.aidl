package android.hardware.camera.device;

// A buffer that its sender has no more use for.
@VintfStability
parcelable BufferCache {
    int streamId;
    long bufferId;
}
