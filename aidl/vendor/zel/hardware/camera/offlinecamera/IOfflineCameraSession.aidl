package vendor.zel.hardware.camera.offlinecamera;

import vendor.zel.hardware.camera.offlinecamera.OfflineRequestInfo;
import vendor.zel.hardware.camera.offlinecamera.OfflineSessionConfigureInfo;

/** One client's run of offline requests, in one operation mode. */
@VintfStability
interface IOfflineCameraSession {
    /** Fixes the operation mode and its streams. */
    void configureOfflineStreams(in OfflineSessionConfigureInfo configureInfo);

    /**
     * Submits requests. Their results arrive through the session's callback.
     *
     * @return the frame number given to a request that asked for one with -1
     */
    int processOfflineRequest(in OfflineRequestInfo[] requests);

    /** Ends the session; nothing is delivered to its callback afterwards. */
    void closeOfflineSession();
}
