package android.hardware.graphics.common;

// A value of the named enum, so that vendors can add enums of their own.
@VintfStability
parcelable ExtendableType {
    @utf8InCpp String name;
    long value = 0;
}
