package android.hardware.camera.device;

import android.hardware.camera.device.CameraMetadata;

// One physical camera's share of a result.
@VintfStability
parcelable PhysicalCameraMetadata {
    // 0: the metadata follows in this message.
    long fmqMetadataSize;

    String physicalCameraId;
    CameraMetadata metadata;
}
