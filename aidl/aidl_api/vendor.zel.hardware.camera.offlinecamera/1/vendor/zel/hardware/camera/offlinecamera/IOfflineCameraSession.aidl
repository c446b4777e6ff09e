package vendor.zel.hardware.camera.offlinecamera;
@VintfStability
interface IOfflineCameraSession {
  void configureOfflineStreams(in vendor.zel.hardware.camera.offlinecamera.OfflineSessionConfigureInfo configureInfo);
  int processOfflineRequest(in vendor.zel.hardware.camera.offlinecamera.OfflineRequestInfo[] requests);
  void closeOfflineSession();
}
