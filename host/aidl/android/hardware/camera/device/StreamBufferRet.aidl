package android.hardware.camera.device;

import android.hardware.camera.device.StreamBuffersVal;

// The answer to one BufferRequest.
@VintfStability
parcelable StreamBufferRet {
    int streamId;
    StreamBuffersVal val;
}
