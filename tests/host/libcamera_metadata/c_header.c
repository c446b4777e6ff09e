// The header is C: this only has to compile and link as C.
#include <system/camera_metadata.h>

int addOrientationFromC(camera_metadata_t* block, int32_t degrees);

int addOrientationFromC(camera_metadata_t* block, int32_t degrees) {
    return add_camera_metadata_entry(block, ANDROID_JPEG_ORIENTATION, &degrees, 1);
}
