package android.hardware.camera.device;

// Which way a stream's buffers go, as seen from the camera.
@VintfStability
@Backing(type="int")
enum StreamType {
    OUTPUT = 0,
    INPUT = 1,
}
