// The streams of each operation mode, and the configuration that carries them to the session.

#include <string>
#include <utility>
#include <vector>

#include "gralloc/clientlog.h"
#include "vexofflinecameraclient.h"

namespace vendor::zel::hardware::camera::offlinecamera::implementation {

namespace {

struct StreamRow {
    uint32_t id;
    StreamType type;
    uint32_t width;
    uint32_t height;
    PixelFormat format;
    BufferUsage usage;
    Dataspace dataSpace;
    uint32_t bufferSize;  // bytes; 0 but for a BLOB
    ScalerAvailableStreamUseCases useCase;
};

constexpr auto kDefaultUse =
        ScalerAvailableStreamUseCases::ANDROID_SCALER_AVAILABLE_STREAM_USE_CASES_DEFAULT;
constexpr auto kStillCapture =
        ScalerAvailableStreamUseCases::ANDROID_SCALER_AVAILABLE_STREAM_USE_CASES_STILL_CAPTURE;

// A YUV output is asked for with CPU_READ_RARELY, a JPEG output with CPU_READ_OFTEN; the services
// this tool is run against are used to it.
constexpr StreamRow kRawInput{0,
                              StreamType::INPUT,
                              4096,
                              3072,
                              PixelFormat::RAW10,
                              BufferUsage::CPU_READ_OFTEN,
                              Dataspace::UNKNOWN,
                              0,
                              kDefaultUse};
constexpr StreamRow kYuvInput{0,
                              StreamType::INPUT,
                              4000,
                              3000,
                              PixelFormat::YCBCR_420_888,
                              BufferUsage::CPU_READ_OFTEN,
                              Dataspace::UNKNOWN,
                              0,
                              kDefaultUse};
constexpr StreamRow kFaceDetectionInput{1,
                                        StreamType::INPUT,
                                        640,
                                        480,
                                        PixelFormat::YCBCR_420_888,
                                        BufferUsage::CPU_READ_OFTEN,
                                        Dataspace::UNKNOWN,
                                        0,
                                        kDefaultUse};

constexpr StreamRow YuvOutput(uint32_t id) {
    return {id,
            StreamType::OUTPUT,
            4000,
            3000,
            PixelFormat::YCBCR_420_888,
            BufferUsage::CPU_READ_RARELY,
            Dataspace::UNKNOWN,
            0,
            kStillCapture};
}

// Two bytes per pixel are room enough for any JPEG of the frame.
constexpr StreamRow kJpegOutput{1,
                                StreamType::OUTPUT,
                                4000,
                                3000,
                                PixelFormat::BLOB,
                                BufferUsage::CPU_READ_OFTEN,
                                Dataspace::JFIF,
                                24000000,
                                kStillCapture};

struct ModeStreams {
    std::vector<StreamRow> inputs;
    std::vector<StreamRow> outputs;
};

// Empty for a mode without streams.
ModeStreams StreamsOfMode(int32_t opMode) {
    switch (opMode) {
        case kB2Y:
            return {{kRawInput}, {YuvOutput(1)}};
        case kY2J:
            return {{kYuvInput}, {kJpegOutput}};
        case kMMF:
            return {{kRawInput, kFaceDetectionInput}, {YuvOutput(2)}};
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
    stream->dynamicRangeProfile = RequestAvailableDynamicRangeProfilesMap::
            ANDROID_REQUEST_AVAILABLE_DYNAMIC_RANGE_PROFILES_MAP_STANDARD;
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
    const ModeStreams mode = StreamsOfMode(m_opMode);
    if (mode.inputs.empty()) {
        CLIENT_LOGE("invalid op mode %d", m_opMode);
        return kSuccess;
    }

    std::vector<SensorPixelMode> pixelModes{SensorPixelMode::ANDROID_SENSOR_PIXEL_MODE_DEFAULT};
    const auto append = [&](const std::vector<StreamRow>& rows, std::vector<Stream>* list) {
        for (const StreamRow& row : rows) {
            Stream stream;
            GetDummyStream(&stream, row.id, row.type, row.width, row.height, row.format, row.usage,
                           row.dataSpace, StreamRotation::ROTATION_0, "", row.bufferSize, -1,
                           pixelModes,
                           RequestAvailableDynamicRangeProfilesMap::
                                   ANDROID_REQUEST_AVAILABLE_DYNAMIC_RANGE_PROFILES_MAP_STANDARD,
                           row.useCase);
            list->push_back(std::move(stream));
        }
        // The whole list, not only what is new: configuring twice sends duplicates.
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
