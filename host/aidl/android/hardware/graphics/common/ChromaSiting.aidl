package android.hardware.graphics.common;

/** Where chroma samples are; values for StandardMetadataType.CHROMA_SITING. */
@VintfStability
@Backing(type="long")
enum ChromaSiting {
    NONE = 0,
    UNKNOWN = 1,
    SITED_INTERSTITIAL = 2,
    COSITED_HORIZONTAL = 3,
}
