package android.hardware.camera.device;

// What a BLOB buffer holds.
@VintfStability
@Backing(type="int")
enum CameraBlobId {
    JPEG = 0x00FF,
    JPEG_APP_SEGMENTS = 0x100,
}
