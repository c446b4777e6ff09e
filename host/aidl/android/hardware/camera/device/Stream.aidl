package android.hardware.camera.device;

import android.hardware.camera.device.StreamRotation;
import android.hardware.camera.device.StreamType;
import android.hardware.camera.metadata.RequestAvailableDynamicRangeProfilesMap;
import android.hardware.camera.metadata.ScalerAvailableStreamUseCases;
import android.hardware.camera.metadata.SensorPixelMode;
import android.hardware.graphics.common.BufferUsage;
import android.hardware.graphics.common.Dataspace;
import android.hardware.graphics.common.PixelFormat;

// One kind of buffer that a camera reads or writes.
@VintfStability
parcelable Stream {
    int id;
    StreamType streamType;
    int width;
    int height;
    PixelFormat format;
    BufferUsage usage;
    Dataspace dataSpace;
    StreamRotation rotation;

    // Empty for a logical camera's stream.
    String physicalCameraId;

    // Bytes; BLOB streams only.
    int bufferSize;

    // Streams of one group share their target; -1 for none.
    int groupId;

    SensorPixelMode[] sensorPixelModesUsed;
    RequestAvailableDynamicRangeProfilesMap dynamicRangeProfile;
    ScalerAvailableStreamUseCases useCase;

    // A value of RequestAvailableColorSpaceProfilesMap.
    int colorSpace;
}
