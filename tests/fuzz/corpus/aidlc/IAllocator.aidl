package android.hardware.graphics.allocator;

import android.hardware.graphics.allocator.AllocationResult;
import android.hardware.graphics.allocator.BufferDescriptorInfo;

@VintfStability
interface IAllocator {
    /** @deprecated use allocate2, which needs no mapper. */
    AllocationResult allocate(in byte[] descriptor, in int count);
    boolean isSupported(in BufferDescriptorInfo descriptor);
    String getIMapperLibrarySuffix();
}
