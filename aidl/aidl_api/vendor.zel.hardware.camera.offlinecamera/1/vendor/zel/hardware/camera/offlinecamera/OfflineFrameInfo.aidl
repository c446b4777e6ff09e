package vendor.zel.hardware.camera.offlinecamera;
@VintfStability
parcelable OfflineFrameInfo {
  android.hardware.camera.device.StreamBuffer[] buffers;
  int numPartialMetadata;
  byte[] metadata;
}
