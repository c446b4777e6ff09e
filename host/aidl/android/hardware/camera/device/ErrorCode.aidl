package android.hardware.camera.device;

// How much of a capture an error message concerns.
@VintfStability
@Backing(type="int")
enum ErrorCode {
    ERROR_DEVICE = 1,
    ERROR_REQUEST = 2,
    ERROR_RESULT = 3,
    ERROR_BUFFER = 4,
}
