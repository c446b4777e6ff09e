package vendor.zel.hardware.camera.offlinecamera;

import android.hardware.camera.device.StreamBuffer;

/** One frame's buffers and metadata, on the input or the output side. */
@VintfStability
parcelable OfflineFrameInfo {
    /** One buffer per stream, in stream order. */
    StreamBuffer[] buffers;

    /** Number of partial metadata results; 0 when not known. */
    int numPartialMetadata;

    /** A camera metadata blob, or empty. */
    byte[] metadata;
}
