package vendor.zel.hardware.camera.offlinecamera;

import android.hardware.camera.device.Stream;

/** What a session is to work on. */
@VintfStability
parcelable OfflineSessionConfigureInfo {
    String cameraId;

    /** All input streams, then all output streams. */
    Stream[] streams;

    /** B2Y 0, Y2J 1, Y2Y 2, MMF 3, QLL 4, R2R 5. */
    int opMode;

    /** A camera metadata blob, or empty. */
    byte[] sessionParams;
}
