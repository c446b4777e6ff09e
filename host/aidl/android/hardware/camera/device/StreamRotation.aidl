package android.hardware.camera.device;

// Counter-clockwise rotation asked of an output stream, in degrees.
@VintfStability
@Backing(type="int")
enum StreamRotation {
    ROTATION_0 = 0,
    ROTATION_90 = 1,
    ROTATION_180 = 2,
    ROTATION_270 = 3,
}
