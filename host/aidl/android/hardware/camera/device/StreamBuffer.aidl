package android.hardware.camera.device;

import android.hardware.camera.device.BufferStatus;
import android.hardware.common.NativeHandle;

// One buffer of a stream on its way to or from a camera.
@VintfStability
parcelable StreamBuffer {
    // -1: no buffer.
    int streamId;

    // Names the buffer again after its handle was sent once; 0 for none.
    long bufferId;

    NativeHandle buffer;
    BufferStatus status;

    // Empty, or wait for it before touching the buffer.
    NativeHandle acquireFence;

    // Empty, or signalled when the sender no longer touches the buffer.
    NativeHandle releaseFence;
}
