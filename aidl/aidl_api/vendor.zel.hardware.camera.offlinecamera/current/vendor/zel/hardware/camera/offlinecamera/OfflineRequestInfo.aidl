package vendor.zel.hardware.camera.offlinecamera;
@VintfStability
parcelable OfflineRequestInfo {
  int frameNumber;
  vendor.zel.hardware.camera.offlinecamera.OfflineFrameInfo[] inFrameInfos;
  android.hardware.camera.device.StreamBuffer[] outputBuffers;
  int reserved;
  byte[] metadata;
}
