package vendor.zel.hardware.camera.offlinecamera;

import vendor.zel.hardware.camera.offlinecamera.IOfflineCameraCallback;
import vendor.zel.hardware.camera.offlinecamera.IOfflineCameraSession;

/**
 * Reprocesses camera frames that come from files instead of a sensor.
 * Registered as "vendor.zel.hardware.camera.offlinecamera.IOfflineCameraService/default".
 */
@VintfStability
interface IOfflineCameraService {
    /**
     * The operation modes for which openOfflineSession can be used. The tool does not call this: it
     * holds position 1, and a service whose position 1 is something else serves the tool as well.
     */
    int[] getSupportedOpModes();

    /**
     * Makes a client known to the service without opening a session.
     *
     * @param clientId chosen by the client
     * @param callback receives what the service has to say to the client
     */
    void registerClient(int clientId, IOfflineCameraCallback callback);

    /**
     * Ends what registerClient began; an unknown client id is an illegal argument. The tool does not
     * call this: it holds position 3.
     */
    void unregisterClient(int clientId);

    /**
     * Opens a session. It ends with closeOfflineSession or with the client's death.
     *
     * @param clientName a name for the service's log
     * @param callback receives the session's notifications and results
     */
    IOfflineCameraSession openOfflineSession(String clientName, IOfflineCameraCallback callback);
}
