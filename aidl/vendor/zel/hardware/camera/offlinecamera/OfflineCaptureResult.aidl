package vendor.zel.hardware.camera.offlinecamera;

import vendor.zel.hardware.camera.offlinecamera.OfflineFrameInfo;

/** What has become of one frame. */
@VintfStability
parcelable OfflineCaptureResult {
    int frameNumber;

    /** The processed side. */
    OfflineFrameInfo outFrameInfo;

    /** The side the service has read and has no more use for. */
    OfflineFrameInfo inFrameInfo;
}
