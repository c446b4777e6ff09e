// The three stream sets.
#include "streams.h"

namespace conformance {

namespace {

using ::aidl::android::hardware::camera::metadata::RequestAvailableDynamicRangeProfilesMap;
using ::aidl::android::hardware::camera::metadata::ScalerAvailableStreamUseCases;
using ::aidl::android::hardware::camera::metadata::SensorPixelMode;
using ::aidl::android::hardware::graphics::common::BufferUsage;
using ::aidl::android::hardware::graphics::common::Dataspace;

Stream MakeStream(int32_t id, StreamType type, int32_t width, int32_t height, PixelFormat format) {
    const bool blob = format == PixelFormat::BLOB;
    Stream stream;
    stream.id = id;
    stream.streamType = type;
    stream.width = width;
    stream.height = height;
    stream.format = format;
    stream.usage = type == StreamType::OUTPUT && !blob ? BufferUsage::CPU_READ_RARELY
                                                       : BufferUsage::CPU_READ_OFTEN;
    stream.dataSpace = blob ? Dataspace::JFIF : Dataspace::UNKNOWN;
    stream.bufferSize = blob ? width * height * 2 : 0;
    stream.groupId = -1;
    stream.sensorPixelModesUsed = {SensorPixelMode::ANDROID_SENSOR_PIXEL_MODE_DEFAULT};
    stream.dynamicRangeProfile = RequestAvailableDynamicRangeProfilesMap::
            ANDROID_REQUEST_AVAILABLE_DYNAMIC_RANGE_PROFILES_MAP_STANDARD;
    if (type == StreamType::OUTPUT) {
        stream.useCase = ScalerAvailableStreamUseCases::
                ANDROID_SCALER_AVAILABLE_STREAM_USE_CASES_STILL_CAPTURE;
    }
    return stream;
}

}  // namespace

const char* NameOf(Mode mode) {
    return mode == Mode::kB2Y ? "B2Y" : mode == Mode::kY2J ? "Y2J" : "MMF";
}

size_t FramesOf(Mode mode) {
    return mode == Mode::kMMF ? 3 : 1;
}

OfflineSessionConfigureInfo ConfigurationOf(Mode mode) {
    const auto in = StreamType::INPUT, out = StreamType::OUTPUT;
    const auto raw = PixelFormat::RAW10, yuv = PixelFormat::YCBCR_420_888;
    OfflineSessionConfigureInfo info;
    info.cameraId = "2";
    info.opMode = static_cast<int32_t>(mode);
    switch (mode) {
        case Mode::kB2Y:
            info.streams = {MakeStream(0, in, 4096, 3072, raw),
                            MakeStream(1, out, 4000, 3000, yuv)};
            break;
        case Mode::kY2J:
            info.streams = {MakeStream(0, in, 4000, 3000, yuv),
                            MakeStream(1, out, 4000, 3000, PixelFormat::BLOB)};
            break;
        case Mode::kMMF:
            info.streams = {MakeStream(0, in, 4096, 3072, raw), MakeStream(1, in, 640, 480, yuv),
                            MakeStream(2, out, 4000, 3000, yuv)};
            break;
    }
    return info;
}

}  // namespace conformance
