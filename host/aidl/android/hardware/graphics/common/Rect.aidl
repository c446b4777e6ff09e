package android.hardware.graphics.common;

/** A rectangle of pixels; right and bottom are outside it. */
@VintfStability
parcelable Rect {
    int left;
    int top;
    int right;
    int bottom;
}
