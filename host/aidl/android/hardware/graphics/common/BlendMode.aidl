package android.hardware.graphics.common;

/** How a layer is put over the ones below. */
@VintfStability
@Backing(type="int")
enum BlendMode {
    INVALID = 0,
    NONE = 1,
    PREMULTIPLIED = 2,
    COVERAGE = 3,
}
