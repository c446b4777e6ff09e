package android.hardware.graphics.common;

/** Values for StandardMetadataType.INTERLACED. */
@VintfStability
@Backing(type="long")
enum Interlaced {
    NONE = 0,
    TOP_BOTTOM = 1,
    RIGHT_LEFT = 2,
}
