// The streams of each operation mode, and the configuration that carries them to the session.

#include <string>
#include <utility>
#include <vector>

#include "gralloc/clientlog.h"
#include "vexofflinecameraclient.h"

namespace vendor::zel::hardware::camera::offlinecamera::implementation {

namespace {

constexpr auto kStandardRange = RequestAvailableDynamicRangeProfilesMap::
        ANDROID_REQUEST_AVAILABLE_DYNAMIC_RANGE_PROFILES_MAP_STANDARD;

// What differs between streams.
struct StreamRow {
    uint32_t id = 0;
    StreamType type = StreamType::INPUT;
    uint32_t width = 0;
    uint32_t height = 0;
    PixelFormat format = PixelFormat::UNSPECIFIED;
    BufferUsage usage = BufferUsage::CPU_READ_OFTEN;
    Dataspace dataSpace = Dataspace::UNKNOWN;
    uint32_t bufferSize = 0;  // bytes of a BLOB; 0 for other formats
    ScalerAvailableStreamUseCases useCase =
            ScalerAvailableStreamUseCases::ANDROID_SCALER_AVAILABLE_STREAM_USE_CASES_DEFAULT;
};

StreamRow Input(uint32_t id, uint32_t width, uint32_t height, PixelFormat format) {
    StreamRow row;
    row.id = id;
    row.width = width;
    row.height = height;
    row.format = format;
    return row;
}

StreamRow YuvOutput(uint32_t id) {
    StreamRow row = Input(id, 4000, 3000, PixelFormat::YCBCR_420_888);
    row.type = StreamType::OUTPUT;
    row.usage = BufferUsage::CPU_READ_RARELY;  // kept: JpegOutput asks for OFTEN
    row.useCase =
            ScalerAvailableStreamUseCases::ANDROID_SCALER_AVAILABLE_STREAM_USE_CASES_STILL_CAPTURE;
    return row;
}

StreamRow JpegOutput(uint32_t id) {
    StreamRow row = YuvOutput(id);
    row.usage = BufferUsage::CPU_READ_OFTEN;
    row.format = PixelFormat::BLOB;
    row.dataSpace = Dataspace::JFIF;
    row.bufferSize = row.width * row.height * 2;  // room for any JPEG of the frame
    return row;
}

struct ModeStreams {
    std::vector<StreamRow> inputs;
    std::vector<StreamRow> outputs;
};

// Empty for a mode without streams.
ModeStreams StreamsOfMode(int32_t opMode) {
    switch (opMode) {
        case kB2Y:
            return {{Input(0, 4096, 3072, PixelFormat::RAW10)}, {YuvOutput(1)}};
        case kY2J:
            return {{Input(0, 4000, 3000, PixelFormat::YCBCR_420_888)}, {JpegOutput(1)}};
        case kMMF:
            return {{Input(0, 4096, 3072, PixelFormat::RAW10),
                     Input(1, 640, 480, PixelFormat::YCBCR_420_888)},
                    {YuvOutput(2)}};
        default:
            return {};
    }
}

}  // namespace

void OfflineCameraClient::GetDummyStream(
        Stream* stream, uint32_t id, StreamType type, uint32_t width, uint32_t height,
        PixelFormat format, BufferUsage usage, Dataspace dataSpace, StreamRotation /*rotation*/,
        std::string physicalCameraId, uint32_t bufferSize, int32_t /*groupId*/,
        std::vector<SensorPixelMode>& sensorPixelModes,
        RequestAvailableDynamicRangeProfilesMap /*dynamicRangeProfile*/,
        ScalerAvailableStreamUseCases useCase) {
    *stream = Stream();
    stream->id = static_cast<int32_t>(id);
    stream->streamType = type;
    stream->width = static_cast<int32_t>(width);
    stream->height = static_cast<int32_t>(height);
    stream->format = format;
    stream->usage = usage;
    stream->dataSpace = dataSpace;
    stream->rotation = StreamRotation::ROTATION_0;
    stream->physicalCameraId = physicalCameraId;
    stream->bufferSize = static_cast<int32_t>(bufferSize);
    stream->groupId = -1;
    stream->dynamicRangeProfile = kStandardRange;
    stream->useCase = useCase;
    for (const SensorPixelMode mode : sensorPixelModes) {
        stream->sensorPixelModesUsed.push_back(mode);
    }
    CLIENT_LOGI("dataspace 0x%x,stream->physicalCameraId %s",
                static_cast<uint32_t>(stream->dataSpace), stream->physicalCameraId.c_str());
}

int32_t OfflineCameraClient::ConfigureOfflineStreamsInfo(
        OfflineSessionConfigureInfo* streamConfig) {
    if (streamConfig == nullptr) {
        CLIENT_LOGE("streamConfig is NULL");
        return kNullGiven;
    }
    std::vector<SensorPixelMode> pixelModes{SensorPixelMode::ANDROID_SENSOR_PIXEL_MODE_DEFAULT};
    const ModeStreams mode = StreamsOfMode(m_opMode);
    if (mode.inputs.empty()) {
        CLIENT_LOGE("invalid op mode %d", m_opMode);
        return kSuccess;
    }
    const auto append = [&](const std::vector<StreamRow>& rows, std::vector<Stream>* list) {
        for (const StreamRow& row : rows) {
            Stream stream;
            GetDummyStream(&stream, row.id, row.type, row.width, row.height, row.format, row.usage,
                           row.dataSpace, StreamRotation::ROTATION_0, "", row.bufferSize, -1,
                           pixelModes, kStandardRange, row.useCase);
            list->push_back(std::move(stream));
        }
        // Kept: appends the whole list, so configuring twice sends duplicates.
        streamConfig->streams.insert(streamConfig->streams.end(), list->begin(), list->end());
    };
    append(mode.inputs, &m_inputStreams);
    append(mode.outputs, &m_outputStreams);
    return kSuccess;
}

int32_t OfflineCameraClient::ConfigureOfflineStreams(std::string cameraId) {
    m_streamConfigName = cameraId;
    ConfigureOfflineStreamsInfo(&m_configureInfo);
    CLIENT_LOGI("stream size:%zu, sizeof(Stream):%zu", m_configureInfo.streams.size(),
                sizeof(Stream));
    m_configureInfo.cameraId = cameraId;
    m_configureInfo.opMode = m_opMode;
    const ::ndk::ScopedAStatus status = m_offlineSession->configureOfflineStreams(m_configureInfo);
    if (!status.isOk()) {
        CLIENT_LOGE("%s, FAILED...", __func__);
        return kFailed;
    }
    CLIENT_LOGI("ConfigureOfflineStreams sucessfully");
    return kSuccess;
}

}  // namespace vendor::zel::hardware::camera::offlinecamera::implementation
