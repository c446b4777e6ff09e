package android.hardware.camera.device;

import android.hardware.camera.device.StreamBuffer;
import android.hardware.camera.device.StreamBufferRequestError;

// The buffers one stream got, or why it got none.
@VintfStability
union StreamBuffersVal {
    StreamBufferRequestError error = StreamBufferRequestError.UNKNOWN_ERROR;
    StreamBuffer[] buffers;
}
