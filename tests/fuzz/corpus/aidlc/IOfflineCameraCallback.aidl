package vendor.zel.hardware.camera.offlinecamera;

import android.hardware.camera.device.BufferRequestStatus;
import android.hardware.camera.device.NotifyMsg;
import android.hardware.camera.device.StreamBuffer;
import vendor.zel.hardware.camera.offlinecamera.OfflineBufferRequest;
import vendor.zel.hardware.camera.offlinecamera.OfflineCaptureResult;
import vendor.zel.hardware.camera.offlinecamera.OfflineStreamBufferRet;

/** The client's end of a session; called by the service from any of its threads. */
@VintfStability
interface IOfflineCameraCallback {
    /** Delivers shutter and error messages. */
    void notify(in NotifyMsg[] msgs);

    /** Delivers results; one frame's result may come in several pieces. */
    void processCaptureResult(in OfflineCaptureResult[] results);

    /** Asks the client for buffers to work with. */
    BufferRequestStatus requestStreamBuffers(
            in OfflineBufferRequest[] requests, out OfflineStreamBufferRet[] rets);

    /** Gives back buffers that requestStreamBuffers lent. */
    void returnStreamBuffers(in StreamBuffer[] buffers);
}
