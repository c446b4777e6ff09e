package android.hardware.camera.device;

// The answer to a request for stream buffers as a whole.
@VintfStability
@Backing(type="int")
enum BufferRequestStatus {
    OK = 0,
    FAILED_PARTIAL = 1,
    FAILED_CONFIGURING = 2,
    FAILED_ILLEGAL_ARGUMENTS = 3,
    FAILED_UNKNOWN = 4,
}
