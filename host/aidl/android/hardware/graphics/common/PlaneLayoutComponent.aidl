package android.hardware.graphics.common;

import android.hardware.graphics.common.ExtendableType;

// Where one component is inside a sample.
@VintfStability
parcelable PlaneLayoutComponent {
    ExtendableType type;
    long offsetInBits;
    long sizeInBits;
}
