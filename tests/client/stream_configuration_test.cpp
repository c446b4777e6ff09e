// The streams of each mode, field by field, and how the session's answer is taken.

#include "tests/support/client_fixture.h"

namespace test {
namespace {

constexpr StreamType kIn = StreamType::INPUT;
constexpr StreamType kOut = StreamType::OUTPUT;

// Numbers as the wire has them.
Stream Expected(int32_t id, StreamType type, int32_t width, int32_t height, int32_t format,
                int64_t usage, int64_t useCase, int32_t dataSpace = 0, int32_t bufferSize = 0) {
    return {id,
            type,
            width,
            height,
            static_cast<PixelFormat>(format),
            static_cast<BufferUsage>(usage),
            static_cast<Dataspace>(dataSpace),
            StreamRotation::ROTATION_0,
            "",
            bufferSize,
            -1,
            {static_cast<SensorPixelMode>(0)},
            static_cast<RequestAvailableDynamicRangeProfilesMap>(1),
            static_cast<ScalerAvailableStreamUseCases>(useCase),
            0};
}

class StreamConfiguration : public ClientTest {};

TEST_F(StreamConfiguration, SendsTheStreamsOfEachMode) {
    const std::string plain = "I dataspace 0x0,stream->physicalCameraId ";
    const struct {
        int32_t opMode;
        std::vector<Stream> streams;
        Lines streamLines;
    } modes[] = {{0,
                  {Expected(0, kIn, 4096, 3072, 37, 3, 0), Expected(1, kOut, 4000, 3000, 35, 2, 2)},
                  {plain, plain}},
                 {1,
                  {Expected(0, kIn, 4000, 3000, 35, 3, 0),
                   Expected(1, kOut, 4000, 3000, 33, 3, 2, 0x8C20000, 24000000)},
                  {plain, "I dataspace 0x8c20000,stream->physicalCameraId "}},
                 {3,
                  {Expected(0, kIn, 4096, 3072, 37, 3, 0), Expected(1, kIn, 640, 480, 35, 3, 0),
                   Expected(2, kOut, 4000, 3000, 35, 2, 2)},
                  {plain, plain, plain}},
                 {2, {}, {"E invalid op mode 2"}},
                 {4, {}, {"E invalid op mode 4"}},
                 {5, {}, {"E invalid op mode 5"}}};
    for (const auto& mode : modes) {
        const OwnClient fresh = NewClient();
        fresh->setOpMode(mode.opMode);
        fresh->OpenOfflineSession("test");
        log.Take();
        EXPECT_EQ(fresh->ConfigureOfflineStreams("camera 2"), 0);

        const auto& info = around.session->configured.back();
        EXPECT_EQ(info.cameraId, "camera 2");
        EXPECT_EQ(info.opMode, mode.opMode);
        EXPECT_THAT(info.sessionParams, IsEmpty());
        EXPECT_EQ(info.streams, mode.streams) << info.toString();
        EXPECT_EQ(fresh->m_streamConfigName, "camera 2");
        EXPECT_EQ(log.Take(),
                  Joined({mode.streamLines,
                          {Format("I stream size:%zu, sizeof(Stream):120", mode.streams.size()),
                           "I ConfigureOfflineStreams sucessfully"}}));
    }
}

TEST_F(StreamConfiguration, RepeatsWholeListsInOrder) {
    Configure(0);
    ASSERT_EQ(client.ConfigureOfflineStreams("2"), 0);
    std::vector<StreamType> types;
    for (const Stream& stream : client.m_configureInfo.streams) types.push_back(stream.streamType);
    EXPECT_THAT(types, ElementsAre(kIn, kOut, kIn, kIn, kOut, kOut));
    EXPECT_EQ(around.session->configured[1].streams, client.m_configureInfo.streams);
    EXPECT_EQ(client.m_inputStreams.size() + client.m_outputStreams.size(), 4u);
}

TEST_F(StreamConfiguration, FailsWithTheSession) {
    client.OpenOfflineSession("test");
    const auto expectFailure = [this] {
        EXPECT_EQ(client.ConfigureOfflineStreams("2"), 1);
        EXPECT_EQ(log.Take().back(), "E ConfigureOfflineStreams, FAILED...");
    };
    around.session->fails = true;
    expectFailure();
    around.session->statusless = true;
    expectFailure();
    EXPECT_EQ(client.m_inputStreams.size(), 2u);  // what was appended stays
}

TEST_F(StreamConfiguration, RefusesNull) {
    EXPECT_EQ(client.ConfigureOfflineStreamsInfo(nullptr), 4);
    EXPECT_THAT(client.m_inputStreams, IsEmpty());
    EXPECT_EQ(log.Take(), (Lines{"E streamConfig is NULL"}));
    client.m_opMode = 2;  // without streams, which is no failure
    EXPECT_EQ(client.ConfigureOfflineStreamsInfo(&client.m_configureInfo), 0);
}

TEST_F(StreamConfiguration, OverwritesAStreamAndFixesThreeFields) {
    Stream stream = Expected(9, kIn, 1, 2, 3, 4, 5, 6, 7);
    stream.sensorPixelModesUsed.assign(5, SensorPixelMode::ANDROID_SENSOR_PIXEL_MODE_DEFAULT);
    stream.colorSpace = 16;
    std::vector<SensorPixelMode> modes{
            SensorPixelMode::ANDROID_SENSOR_PIXEL_MODE_MAXIMUM_RESOLUTION};
    OfflineCameraClient::GetDummyStream(&stream, 3u, kOut, 40u, 30u, PixelFormat::BLOB,
                                        BufferUsage::CPU_READ_RARELY, Dataspace::JFIF,
                                        StreamRotation::ROTATION_90, "physical", 99u, 5, modes,
                                        static_cast<RequestAvailableDynamicRangeProfilesMap>(2),
                                        static_cast<ScalerAvailableStreamUseCases>(6));
    Stream expected = Expected(3, kOut, 40, 30, 33, 2, 6, 0x8C20000, 99);
    expected.physicalCameraId = "physical";
    expected.sensorPixelModesUsed = modes;
    EXPECT_EQ(stream, expected) << stream.toString();
    EXPECT_EQ(log.Take(), (Lines{"I dataspace 0x8c20000,stream->physicalCameraId physical"}));
}

}  // namespace
}  // namespace test
