package vendor.zel.hardware.camera.offlinecamera;
@VintfStability
parcelable OfflineCaptureResult {
  int frameNumber;
  vendor.zel.hardware.camera.offlinecamera.OfflineFrameInfo outFrameInfo;
  vendor.zel.hardware.camera.offlinecamera.OfflineFrameInfo inFrameInfo;
}
