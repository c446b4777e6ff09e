package android.hardware.graphics.allocator;

// Why an allocation failed; sent as a service-specific error.
@VintfStability
@Backing(type="int")
enum AllocationError {
    BAD_DESCRIPTOR = 0,
    NO_RESOURCES = 1,
    UNSUPPORTED = 2,
}
