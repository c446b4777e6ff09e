package android.hardware.graphics.common;

/** A chromaticity. */
@VintfStability
parcelable XyColor {
    float x;
    float y;
}
