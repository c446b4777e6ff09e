package android.hardware.camera.metadata;

// Which of a sensor's readout modes a stream can be used with.
@VintfStability
@Backing(type="int")
enum SensorPixelMode {
    ANDROID_SENSOR_PIXEL_MODE_DEFAULT = 0,
    ANDROID_SENSOR_PIXEL_MODE_MAXIMUM_RESOLUTION = 1,
}
