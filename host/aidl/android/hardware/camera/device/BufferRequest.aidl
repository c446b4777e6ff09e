package android.hardware.camera.device;

// Asks for buffers of one stream.
@VintfStability
parcelable BufferRequest {
    int streamId;
    int numBuffersRequested;
}
