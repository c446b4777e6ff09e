package android.hardware.camera.device;

// How a set of streams is run.
@VintfStability
@Backing(type="int")
enum StreamConfigurationMode {
    NORMAL_MODE = 0,
    CONSTRAINED_HIGH_SPEED_MODE = 1,
    VENDOR_MODE_0 = 0x8000,
    VENDOR_MODE_1 = 0x8001,
    VENDOR_MODE_2 = 0x8002,
    VENDOR_MODE_3 = 0x8003,
    VENDOR_MODE_4 = 0x8004,
    VENDOR_MODE_5 = 0x8005,
    VENDOR_MODE_6 = 0x8006,
    VENDOR_MODE_7 = 0x8007,
}
