package android.hardware.graphics.common;

/** How bright the content is at most. */
@VintfStability
parcelable Cta861_3 {
    float maxContentLightLevel;
    float maxFrameAverageLightLevel;
}
