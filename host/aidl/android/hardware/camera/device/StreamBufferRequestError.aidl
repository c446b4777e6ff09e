package android.hardware.camera.device;

// Why one stream got no buffers.
@VintfStability
@Backing(type="int")
enum StreamBufferRequestError {
    NO_BUFFER_AVAILABLE = 1,
    MAX_BUFFER_EXCEEDED = 2,
    STREAM_DISCONNECTED = 3,
    UNKNOWN_ERROR = 4,
}
