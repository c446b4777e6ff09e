package android.hardware.graphics.common;

import android.hardware.graphics.common.XyColor;

/** The display that a picture was mastered on. */
@VintfStability
parcelable Smpte2086 {
    XyColor primaryRed;
    XyColor primaryGreen;
    XyColor primaryBlue;
    XyColor whitePoint;
    float maxLuminance;
    float minLuminance;
}
