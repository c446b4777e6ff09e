package vendor.zel.hardware.camera.offlinecamera;
@VintfStability
parcelable OfflineBufferRequest {
  android.hardware.camera.device.Stream stream;
  int numBuffersRequested;
}
