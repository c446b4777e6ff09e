package android.hardware.graphics.common;

import android.hardware.graphics.common.PlaneLayoutComponent;

// Where one plane is in a buffer and how its samples follow each other.
@VintfStability
parcelable PlaneLayout {
    PlaneLayoutComponent[] components;
    long offsetInBytes;
    long sampleIncrementInBits;
    long strideInBytes;
    long widthInSamples;
    long heightInSamples;
    long totalSizeInBytes;
    long horizontalSubsampling;
    long verticalSubsampling;
}
