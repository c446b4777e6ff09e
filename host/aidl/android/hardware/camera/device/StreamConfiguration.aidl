package android.hardware.camera.device;

import android.hardware.camera.device.CameraMetadata;
import android.hardware.camera.device.Stream;
import android.hardware.camera.device.StreamConfigurationMode;

// A set of streams to be run together.
@VintfStability
parcelable StreamConfiguration {
    Stream[] streams;
    StreamConfigurationMode operationMode;
    CameraMetadata sessionParams;
    int streamConfigCounter;
    boolean multiResolutionInputImage;
    long logId = 0;
}
