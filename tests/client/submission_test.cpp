// Submission, the two waits, and the whole log of a run.

#include <chrono>
#include <mutex>
#include <thread>

#include "tests/host/libhidlbase/open_descriptors.h"
#include "tests/support/client_fixture.h"

using ::testing::IsSupersetOf;

namespace test {
namespace {

class Submission : public ClientTest {
  public:
    // Returns when the line is there and its thread has gone to wait with the lock released.
    void AwaitWaiting(const std::string& line, int times = 1) {
        EXPECT_TRUE(log.WaitFor(line, times)) << line;
        const std::lock_guard<std::mutex> lock(client.m_resultLock);
    }
};

TEST_F(Submission, BuildsAndSendsTheRequestAndLogsEveryStep) {
    ConfigureB2Y();
    ASSERT_EQ(client.ProcessOfflineRequest(), 0);
    EXPECT_EQ(log.Take(),
              (Lines{"I allocate input metadata (nil)", "I buffer allocationsize: 4096",
                     Format("I input streamId 0, bufferStride 64, bufferScanline 0 buffer %p width "
                            "4096, height 3072 bufferSize  4096",
                            Captured(0).importedBuf),
                     "I LoadOffineSourceRawFrame: open input file "
                     "/data/vendor/camera/offlinecameratest/4096_3072_RAW10.raw",
                     "I LoadOffineSourceRawFrame: f_wxf_h 64x0, stridexscanline 64x0, f_off 0,",
                     "I buffer allocationsize: 4096",
                     Format("I output streamId 1, bufferStride 64, bufferScanline 0, buffer %p "
                            "width 4000, height 3000 bufferSize  4096",
                            Captured(1).importedBuf),
                     "I ProcessOfflineRequest sucessfully",
                     "I request id frameNumber:7 return frameNumber 7"}));
}

// One piece of a result as it arrives during the wait.
Lines DeliveryOf(int frame) {
    return {"I WaitForResult wait_for condtion trigger",
            "I processCaptureResult: callback capture result",
            "I ProcessOfflineResult 1",
            Format("I ProcessOfflineResult: outframeinfo numPartialMetadata 0 frame numbrer %d "
                   "buffer size 1 ",
                   frame),
            "I GetResultFrameInfo: result.end() numPartialMetadata 0",
            "I GetResultFrameInfo: result.end() pMetadata (nil)",
            "I GetResultFrameInfo: result.end() ",
            Format("I ProcessOfflineResult: inframeinfo numPartialMetadata 0 frame numbrer %d "
                   "buffer size 0 ",
                   frame),
            "I ProcessOfflineResult: result notifty"};
}

TEST_F(Submission, WaitsForItsOwnFrameDumpsItAndLogsEveryStep) {
    ConfigureB2Y();
    ASSERT_EQ(client.ProcessOfflineRequest(), 0);
    native_handle* const output = Captured(1).importedBuf;
    const char* const memory = around.mapper->Memory(output);
    log.Take();
    std::thread service([this] {
        AwaitWaiting("IsShutterReceivedLocked frameNumber is 7");
        DeliverShutter(8);
        AwaitWaiting("IsShutterReceivedLocked frameNumber is 7", 2);
        DeliverShutter(7);
        AwaitWaiting("WaitForResult wait_for condtion trigger");
        DeliverResult(8);
        AwaitWaiting("WaitForResult wait_for condtion trigger", 2);
        DeliverResult(7);
    });
    client.WaitCaptureResultCompleted();
    service.join();
    const Lines shutter{"I WaitCaptureResultCompleted result frameNum is 7",
                        "I WaitForShutter frame 7 time 5000",
                        "I IsShutterReceivedLocked frameNumber is 7",
                        "I notify: callback notify",
                        "I IsShutterReceivedLocked frameNumber is 7",
                        "I notify: callback notify",
                        "I WaitForShutter frame 7 received 1",
                        "I WaitForResult result timeout_ms 5000"};
    const Lines result{"I WaitForResult wait_for condtion trigger",
                       "I ContainsTheSameBuffers result streamId  1 bufferId  1",
                       "I ContainsTheSameBuffers request streamId  1 bufferId  1",
                       "I IsResultReceivedLocked sucessfully",
                       "I WaitForResult received is 1",
                       "I WaitCaptureResultCompleted status is 0",
                       "I result completed outputResult->second.buffers.size 1",
                       Format("I result completed importedBuf %p", output),
                       Format("I result completed buffer %p", memory),
                       "I imageSize 0 bufferSize  4096",
                       Format("I freeBuffer %p", output)};
    EXPECT_EQ(log.Take(), Joined({shutter, DeliveryOf(8), DeliveryOf(7), result}));
    EXPECT_THAT(data.Dumps(), ElementsAre("OfflineAidl_CameraId_2_Frame_7_B2Y_Stride[64]_"
                                          "Scanline[0].yuv"));
}

// The first of two requests gets an error, no shutter and other buffers; waits for the real
// limits.
TEST_F(Submission, GoesOnAfterATimeOutDumpsEveryBufferAndFreesEveryInput) {
    const int descriptors = CountOpenDescriptors();
    client.OpenOfflineSession("test");
    for (const int32_t id : {0, 1, 2, 3}) {
        Stream stream;
        stream.id = id;
        stream.format = id == 2 ? PixelFormat::YCBCR_420_888 : PixelFormat::RAW10;
        (id < 2 ? client.m_inputStreams : client.m_outputStreams).push_back(stream);
    }
    data.Write(kRawFile, "");
    around.session->frameNumber = 0;
    ASSERT_EQ(client.ProcessOfflineRequest(), 0);
    around.session->frameNumber = 8;
    ASSERT_EQ(client.ProcessOfflineRequest(), 0);
    client.m_returnFrameNumber = 99;                       // not looked at any more
    client.m_callback->notify({NotifyMsg(), Shutter(8)});  // an error of frame 0, and a shutter
    DeliverResult(0, {{2, 2}, {3, 1}});
    DeliverResult(8, {{3, 2}, {2, 1}});
    log.Take();
    around.calls.clear();
    const auto begin = std::chrono::steady_clock::now();
    client.WaitCaptureResultCompleted();
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(2 * 5000));

    const Lines request{"I ContainsTheSameBuffers request streamId  2 bufferId  1",
                        "I ContainsTheSameBuffers request streamId  3 bufferId  2"};
    const Lines shutter{"I WaitCaptureResultCompleted result frameNum is 0",
                        "I WaitForShutter frame 0 time 5000",
                        "I IsShutterReceivedLocked frameNumber is 0",
                        "I IsShutterReceivedLocked frameNumber is 0",
                        "I WaitForShutter frame 0 received 0",
                        "I WaitForResult result timeout_ms 5000"};
    const Lines refused = Joined({{"I ContainsTheSameBuffers result streamId  2 bufferId  2",
                                   "I ContainsTheSameBuffers result streamId  3 bufferId  1"},
                                  request,
                                  {"W IsResultReceivedLocked failed"}});
    const Lines again{"I WaitForResult wait_for condtion trigger"};
    const Lines next{"I WaitForResult received is 0",
                     "I WaitCaptureResultCompleted status is -110",
                     "I WaitCaptureResultCompleted result frameNum is 8",
                     "I WaitForShutter frame 8 time 5000",
                     "I WaitForResult result timeout_ms 5000",
                     "I ContainsTheSameBuffers result streamId  3 bufferId  2",
                     "I ContainsTheSameBuffers result streamId  2 bufferId  1"};
    const Lines end{"I IsResultReceivedLocked sucessfully",
                    "I WaitCaptureResultCompleted status is 0",
                    "I result completed outputResult->second.buffers.size 2"};
    const Lines expected =
            Joined({shutter, refused, again, refused, again, refused, next, request, end});
    Lines lines = log.Take();
    lines.resize(expected.size());
    EXPECT_EQ(lines, expected);
    // Both requests have buffers of these ids.
    const Lines dump{"lock 0", "unlock", "freeBuffer"};
    EXPECT_EQ(around.calls, Joined({dump, dump, dump, dump}));
    EXPECT_THAT(data.Dumps(),
                ElementsAre("OfflineAidl_CameraId__Frame_8_B2Y_Stride[64]_Scanline[0].raw",
                            "OfflineAidl_CameraId__Frame_8_B2Y_Stride[64]_Scanline[0].yuv"));

    Lines freed;
    for (const uint32_t input : {0, 1}) {
        for (const ClientCaptureBuffer& buffer : client.m_captureRequests[input].buffers) {
            freed.push_back(Format("I freeBuffer %p", buffer.importedBuf));
        }
    }
    EXPECT_THAT(freed, SizeIs(4));
    client.m_frameInfos[7];
    client.m_allocatedHandles.insert(reinterpret_cast<native_handle*>(this));
    client.m_zelInterface->m_allocator = around.allocator;
    client.m_zelInterface->m_aiMapper = reinterpret_cast<AIMapper*>(this);
    bool cleared = false;
    log.AtLine("[AIDL] OfflineCameraClient destr", [&] {
        cleared = client.m_frameInfos.empty() && client.m_resultFrameInfos.empty() &&
                  client.m_captureRequests.empty() && client.m_allocatedHandles.empty() &&
                  client.m_zelInterface->m_aiMapper == nullptr &&
                  client.m_zelInterface->m_allocator == nullptr;
    });
    own.reset();
    EXPECT_TRUE(cleared);
    EXPECT_EQ(log.Take(), Joined({freed, {"I [AIDL] OfflineCameraClient destructor called"}}));
    EXPECT_EQ(CountOpenDescriptors(), descriptors);
}

TEST_F(Submission, NumbersOnlyRequestsWithoutANumber) {
    ConfigureB2Y();
    around.session->frameNumber = 0;  // a number, too
    ASSERT_EQ(client.ProcessOfflineRequest(), 0);
    around.session->frameNumber = 8;
    around.session->onProcess = [](const FakeSession::Requests& requests) {
        ASSERT_EQ(requests.size(), 2u);
        EXPECT_EQ(requests[0].frameNumber, 0);
        EXPECT_EQ(requests[1].frameNumber, -1);
    };
    log.Take();
    ASSERT_EQ(client.ProcessOfflineRequest(), 0);
    EXPECT_THAT(log.Take(), IsSupersetOf({"I request id frameNumber:0 return frameNumber 8",
                                          "I request id frameNumber:8 return frameNumber 8"}));
}

TEST_F(Submission, FailsWithTheSession) {
    ConfigureB2Y();
    for (const bool statusless : {false, true}) {
        around.session->fails = true;
        around.session->statusless = statusless;
        client.m_offlineRequests.clear();
        log.Take();
        EXPECT_EQ(client.ProcessOfflineRequest(), 1);
        EXPECT_THAT(log.Take(), IsSupersetOf({"E ProcessOfflineRequest, FAILED...",
                                              "I request id frameNumber:0 return frameNumber 0"}));
    }
}

TEST_F(Submission, WithoutSessionStillNumbersRequests) {
    client.m_offlineRequests.resize(1);
    client.m_offlineRequests[0].frameNumber = -1;
    client.m_notifyMessages.resize(1);
    EXPECT_EQ(client.ProcessOfflineRequest(), 4);
    EXPECT_EQ(log.Take(), (Lines{"E m_offlineSession is NULL",
                                 "I request id frameNumber:0 return frameNumber 0"}));
    EXPECT_EQ(client.m_notifyMessages.size(), 1u);  // nothing was cleared
}

TEST_F(Submission, SubmitsNothingThatCouldNotBeBuilt) {
    Configure(0);
    client.m_resultFrameInfos[7];
    client.m_notifyMessages.resize(1);
    EXPECT_EQ(client.ProcessOfflineRequest(), 5);
    EXPECT_EQ(log.Take("").back(), "E load source raw frame failed");
    EXPECT_THAT(client.m_resultFrameInfos, IsEmpty());  // cleared before the building
    EXPECT_THAT(client.m_notifyMessages, IsEmpty());
}

}  // namespace
}  // namespace test
