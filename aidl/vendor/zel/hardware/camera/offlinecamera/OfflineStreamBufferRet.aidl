package vendor.zel.hardware.camera.offlinecamera;

import android.hardware.camera.device.Stream;
import android.hardware.camera.device.StreamBuffersVal;

/** The answer to one OfflineBufferRequest. */
@VintfStability
parcelable OfflineStreamBufferRet {
    Stream stream;
    StreamBuffersVal val;
}
