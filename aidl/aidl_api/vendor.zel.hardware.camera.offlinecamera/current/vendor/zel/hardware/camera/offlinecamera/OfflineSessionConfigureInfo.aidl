package vendor.zel.hardware.camera.offlinecamera;
@VintfStability
parcelable OfflineSessionConfigureInfo {
  String cameraId;
  android.hardware.camera.device.Stream[] streams;
  int opMode;
  byte[] sessionParams;
}
