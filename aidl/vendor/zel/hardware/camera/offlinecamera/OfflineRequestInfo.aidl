package vendor.zel.hardware.camera.offlinecamera;

import android.hardware.camera.device.StreamBuffer;
import vendor.zel.hardware.camera.offlinecamera.OfflineFrameInfo;

/** One capture: input frames in, one buffer per output stream out. */
@VintfStability
parcelable OfflineRequestInfo {
    /** -1 lets the service choose the number. */
    int frameNumber;

    /** In frame order; several where a mode combines frames. */
    OfflineFrameInfo[] inFrameInfos;

    /** One buffer per output stream, in stream order. */
    StreamBuffer[] outputBuffers;

    /** Not in use; 0. */
    int reserved;

    /** A camera metadata blob for the whole request, or empty. */
    byte[] metadata;
}
