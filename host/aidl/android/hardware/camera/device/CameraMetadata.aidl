package android.hardware.camera.device;

// A camera metadata blob.
@VintfStability
parcelable CameraMetadata {
    byte[] metadata;
}
