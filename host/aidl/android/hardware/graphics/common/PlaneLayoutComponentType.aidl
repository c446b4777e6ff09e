package android.hardware.graphics.common;

// What one component of a plane holds.
@VintfStability
@Backing(type="long")
enum PlaneLayoutComponentType {
    Y = 1 << 0,
    CB = 1 << 1,
    CR = 1 << 2,
    R = 1 << 10,
    G = 1 << 11,
    B = 1 << 12,
    RAW = 1 << 20,
    A = 1 << 30,
}
