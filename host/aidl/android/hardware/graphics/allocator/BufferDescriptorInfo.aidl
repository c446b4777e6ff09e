package android.hardware.graphics.allocator;

import android.hardware.graphics.common.BufferUsage;
import android.hardware.graphics.common.ExtendableType;
import android.hardware.graphics.common.PixelFormat;

// What kind of buffer is wanted.
@VintfStability
parcelable BufferDescriptorInfo {
    // UTF-8, ended by a zero byte.
    byte[128] name;

    int width;
    int height;
    int layerCount;
    PixelFormat format = PixelFormat.UNSPECIFIED;
    BufferUsage usage = BufferUsage.CPU_READ_NEVER;

    // Bytes for the client's own use that come with each buffer.
    long reservedSize;

    ExtendableType[] additionalOptions;
}
