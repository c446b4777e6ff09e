package android.hardware.camera.device;

// Whether a buffer's content can be used.
@VintfStability
@Backing(type="int")
enum BufferStatus {
    OK = 0,
    ERROR = 1,
}
