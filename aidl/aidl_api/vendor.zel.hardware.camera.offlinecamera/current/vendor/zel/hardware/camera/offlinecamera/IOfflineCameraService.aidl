package vendor.zel.hardware.camera.offlinecamera;
@VintfStability
interface IOfflineCameraService {
  int[] getSupportedOpModes();
  void registerClient(int clientId, vendor.zel.hardware.camera.offlinecamera.IOfflineCameraCallback callback);
  void unregisterClient(int clientId);
  vendor.zel.hardware.camera.offlinecamera.IOfflineCameraSession openOfflineSession(String clientName, vendor.zel.hardware.camera.offlinecamera.IOfflineCameraCallback callback);
}
