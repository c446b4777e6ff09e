package android.hardware.graphics.common;

// What a buffer will be used for: bits, and two fields of four bits for the CPU.
@VintfStability
@Backing(type="long")
enum BufferUsage {
    CPU_READ_MASK = 0xf,
    CPU_READ_NEVER = 0,
    CPU_READ_RARELY = 2,
    CPU_READ_OFTEN = 3,
    CPU_WRITE_MASK = 0xf << 4,
    CPU_WRITE_NEVER = 0 << 4,
    CPU_WRITE_RARELY = 2 << 4,
    CPU_WRITE_OFTEN = 3 << 4,
    GPU_TEXTURE = 1 << 8,
    GPU_RENDER_TARGET = 1 << 9,
    COMPOSER_OVERLAY = 1 << 11,
    COMPOSER_CLIENT_TARGET = 1 << 12,
    PROTECTED = 1 << 14,
    COMPOSER_CURSOR = 1 << 15,
    VIDEO_ENCODER = 1 << 16,
    CAMERA_OUTPUT = 1 << 17,
    CAMERA_INPUT = 1 << 18,
    RENDERSCRIPT = 1 << 20,
    VIDEO_DECODER = 1 << 22,
    SENSOR_DIRECT_DATA = 1 << 23,
    GPU_DATA_BUFFER = 1 << 24,
    GPU_CUBE_MAP = 1 << 25,
    GPU_MIPMAP_COMPLETE = 1 << 26,
    HW_IMAGE_ENCODER = 1 << 27,
    FRONT_BUFFER = 1L << 32,
    // An int, so the upper half is all ones, too: version 4 has it so.
    VENDOR_MASK = 0xf << 28,
    VENDOR_MASK_HI = 0xffffL << 48,
}
