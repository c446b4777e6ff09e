package android.hardware.graphics.allocator;

import android.hardware.common.NativeHandle;

// The buffers of one allocation.
@VintfStability
parcelable AllocationResult {
    // In pixels.
    int stride;

    NativeHandle[] buffers;
}
