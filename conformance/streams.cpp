// The three stream sets.
#include "buffers.h"

namespace conformance {

namespace {

using ::aidl::android::hardware::camera::metadata::RequestAvailableDynamicRangeProfilesMap;
using ::aidl::android::hardware::camera::metadata::ScalerAvailableStreamUseCases;
using ::aidl::android::hardware::camera::metadata::SensorPixelMode;
using ::aidl::android::hardware::graphics::common::BufferUsage;
using ::aidl::android::hardware::graphics::common::Dataspace;

Stream MakeStream(int32_t id, StreamType type, int32_t width, int32_t height, PixelFormat format) {
    const bool blob = format == PixelFormat::BLOB, output = type == StreamType::OUTPUT;
    Stream stream;
    stream.id = id;
    stream.streamType = type;
    stream.width = width;
    stream.height = height;
    stream.format = format;
    stream.usage = output && !blob ? BufferUsage::CPU_READ_RARELY : BufferUsage::CPU_READ_OFTEN;
    stream.dataSpace = blob ? Dataspace::JFIF : Dataspace::UNKNOWN;
    stream.bufferSize = blob ? width * height * 2 : 0;
    stream.groupId = -1;
    stream.sensorPixelModesUsed = {SensorPixelMode::ANDROID_SENSOR_PIXEL_MODE_DEFAULT};
    stream.dynamicRangeProfile = RequestAvailableDynamicRangeProfilesMap(1);  // STANDARD
    stream.useCase = ScalerAvailableStreamUseCases(output ? 2 : 0);  // STILL_CAPTURE or DEFAULT
    return stream;
}

}  // namespace

const char* NameOf(int32_t mode) {
    return mode == kB2Y ? "B2Y" : mode == kY2J ? "Y2J" : "MMF";
}

Configuration ConfigurationOf(Mode mode) {
    const auto yuv = PixelFormat::YCBCR_420_888;
    const auto raw = MakeStream(0, StreamType::INPUT, 4096, 3072, PixelFormat::RAW10);
    const auto output = [](int32_t id, PixelFormat format) {
        return MakeStream(id, StreamType::OUTPUT, 4000, 3000, format);
    };
    Configuration info;
    info.cameraId = "2";
    info.opMode = mode;
    if (mode == kB2Y) info.streams = {raw, output(1, yuv)};
    if (mode == kY2J) {
        info.streams = {MakeStream(0, StreamType::INPUT, 4000, 3000, yuv),
                        output(1, PixelFormat::BLOB)};
    }
    if (mode == kMMF) {
        info.streams = {raw, MakeStream(1, StreamType::INPUT, 640, 480, yuv), output(2, yuv)};
    }
    return info;
}

}  // namespace conformance
