package vendor.zel.hardware.camera.offlinecamera;
@VintfStability
interface IOfflineCameraCallback {
  void notify(in android.hardware.camera.device.NotifyMsg[] msgs);
  void processCaptureResult(in vendor.zel.hardware.camera.offlinecamera.OfflineCaptureResult[] results);
  android.hardware.camera.device.BufferRequestStatus requestStreamBuffers(in vendor.zel.hardware.camera.offlinecamera.OfflineBufferRequest[] requests, out vendor.zel.hardware.camera.offlinecamera.OfflineStreamBufferRet[] rets);
  void returnStreamBuffers(in android.hardware.camera.device.StreamBuffer[] buffers);
}
