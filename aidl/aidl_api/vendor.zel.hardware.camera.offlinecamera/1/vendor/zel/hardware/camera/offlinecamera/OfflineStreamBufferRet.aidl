package vendor.zel.hardware.camera.offlinecamera;
@VintfStability
parcelable OfflineStreamBufferRet {
  android.hardware.camera.device.Stream stream;
  android.hardware.camera.device.StreamBuffersVal val;
}
