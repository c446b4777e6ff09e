package android.hardware.camera.device;

import android.hardware.camera.device.CameraMetadata;
import android.hardware.camera.device.PhysicalCameraMetadata;
import android.hardware.camera.device.StreamBuffer;

// What has become of one capture, or a part of it.
@VintfStability
parcelable CaptureResult {
    int frameNumber;

    // 0: the metadata follows in this message.
    long fmqResultSize;

    CameraMetadata result;
    StreamBuffer[] outputBuffers;
    StreamBuffer inputBuffer;
    int partialResult;
    PhysicalCameraMetadata[] physicalCameraMetadata;
}
