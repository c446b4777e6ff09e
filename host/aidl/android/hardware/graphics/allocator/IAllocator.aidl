package android.hardware.graphics.allocator;

import android.hardware.graphics.allocator.AllocationResult;
import android.hardware.graphics.allocator.BufferDescriptorInfo;

// Makes graphics buffers. Failures are service-specific errors of AllocationError.
@VintfStability
interface IAllocator {
    /**
     * Allocates buffers from a descriptor that the mapper has encoded.
     *
     * @deprecated use allocate2, which needs no mapper.
     */
    AllocationResult allocate(in byte[] descriptor, in int count);

    // Allocates count buffers of one kind; all or none.
    AllocationResult allocate2(in BufferDescriptorInfo descriptor, in int count);

    // Whether allocate2 could succeed with the descriptor.
    boolean isSupported(in BufferDescriptorInfo descriptor);

    // Which mapper library fits the buffers: the SUFFIX of mapper.SUFFIX.so.
    String getIMapperLibrarySuffix();
}
