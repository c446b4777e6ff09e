package android.hardware.graphics.common;

/** Values for StandardMetadataType.COMPRESSION. */
@VintfStability
@Backing(type="long")
enum Compression {
    NONE = 0,
    DISPLAY_STREAM_COMPRESSION = 1,
}
