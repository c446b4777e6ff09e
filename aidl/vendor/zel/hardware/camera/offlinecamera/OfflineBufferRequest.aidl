package vendor.zel.hardware.camera.offlinecamera;

import android.hardware.camera.device.Stream;

/** Asks for buffers that fit one stream. */
@VintfStability
parcelable OfflineBufferRequest {
    Stream stream;
    int numBuffersRequested;
}
