// A client of its own for each test, with fakes of everything around it.
#pragma once

#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "client/offlinecameracallbacks.h"
#include "client/vexofflinecameraclient.h"
#include "tests/support/data_folder.h"
#include "tests/support/fake_display_mapper.h"
#include "tests/support/fake_services.h"
#include "tests/support/log_capture.h"
#include "tests/support/memory_mapper.h"
#include "tests/support/words.h"

namespace vendor::zel::hardware::camera::offlinecamera::implementation {

// Constructs clients besides the process-wide one, and reaches into them.
struct OfflineCameraClientAccess {
    using CallBacks = OfflineCameraClient::OfflineCameraCallBacks;

    // In zeroed storage, as the process-wide one is.
    static OfflineCameraClient* Construct(void* storage) {
        memset(storage, 0, sizeof(OfflineCameraClient));
        return new (storage) OfflineCameraClient();
    }
    static void Destroy(OfflineCameraClient* client) { client->~OfflineCameraClient(); }

    OfflineCameraClient* client;

    auto& Wrapper() { return client->m_grallocWrapper; }
    auto& AllocatedHandles() { return client->m_allocatedHandles; }
    auto& CaptureRequests() { return client->m_captureRequests; }
    auto& ConfigureInfo() { return client->m_configureInfo; }
    auto& OpMode() { return client->m_opMode; }
    auto& OfflineRequests() { return client->m_offlineRequests; }
    auto& OfflineSession() { return client->m_offlineSession; }
    auto& Callback() { return client->m_callback; }
    auto& StreamConfigName() { return client->m_streamConfigName; }
    size_t ReservedBytes() {
        return client->m_reservedList.capacity() * sizeof(client->m_reservedList[0]);
    }
    auto& BufferLock() { return client->m_callback->m_bufferLock; }
    auto& ResultLock() { return client->m_resultLock; }
    auto& ResultCondition() { return client->m_resultCondition; }
    auto& InputStreams() { return client->m_inputStreams; }
    auto& OutputStreams() { return client->m_outputStreams; }
    auto& ZelInterface() { return client->m_zelInterface; }
    auto& ResultFrameInfos() { return client->m_resultFrameInfos; }
    auto& NotifyMessages() { return client->m_notifyMessages; }

    template <class... Args>
    static void GetDummyStream(Args&&... args) {
        OfflineCameraClient::GetDummyStream(std::forward<Args>(args)...);
    }
    int32_t ConfigureOfflineStreamsInfo(OfflineSessionConfigureInfo* info) {
        return client->ConfigureOfflineStreamsInfo(info);
    }
    static int32_t LoadYuv(const char* path, char* buffer, uint32_t width, uint32_t height) {
        return OfflineCameraClient::LoadOffineSourceYUVFrame(path, buffer, width, height);
    }
    static int32_t LoadRaw(char* buffer, int32_t stride, int32_t scanline) {
        return OfflineCameraClient::LoadOffineSourceRawFrame(buffer, stride, scanline);
    }
    static void LoadMetadata(std::vector<uint8_t>* metadata) {
        OfflineCameraClient::LoadOffineInputMetadata(metadata);
    }
    int32_t InitOfflineRequest(const OfflineSessionConfigureInfo* info) {
        return client->InitOfflineRequest(info);
    }
    void Dump(const ClientStreamBuffer& buffer, int32_t frameNumber) {
        client->DumpResultBuffer(buffer, frameNumber);
    }
    void freeBuffer(native_handle* buffer) { client->freeBuffer(buffer); }
    bool ContainsTheSameBuffers(std::vector<ClientStreamBuffer>* result,
                                std::vector<StreamBuffer>* request) {
        return client->ContainsTheSameBuffers(result, request);
    }
};

}  // namespace vendor::zel::hardware::camera::offlinecamera::implementation

namespace test {

using namespace ::vendor::zel::hardware::camera::offlinecamera::implementation;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using Lines = Words;

constexpr char kRawFile[] = "offlinecameratest/4096_3072_RAW10.raw";

inline NotifyMsg Shutter(int32_t frameNumber) {
    ::aidl::android::hardware::camera::device::ShutterMsg message;
    message.frameNumber = frameNumber;
    return NotifyMsg::make<NotifyMsg::Tag::shutter>(message);
}

// The services are up and the client is constructed; its lines so far are taken.
class ClientTest : public ::testing::Test {
  public:
    ClientTest() : client(*OfflineCameraClientAccess::Construct(m_storage)), access{&client} {
        log.Take();
    }
    ~ClientTest() override { Destroy(); }

    void Destroy() {
        if (access.client != nullptr) OfflineCameraClientAccess::Destroy(access.client);
        access.client = nullptr;
    }

    // The session is open and the mode's streams are configured; lines so far are taken.
    void Configure(int32_t opMode) {
        client.setOpMode(opMode);
        client.OpenOfflineSession("test");
        ASSERT_EQ(client.ConfigureOfflineStreams("2"), 0);
        log.Take();
    }

    // B2Y, with its source file in place.
    void ConfigureB2Y() {
        Configure(0);
        data.Write(kRawFile, "");
    }

    // Delivers a frame's only buffer, of stream 1, as the service would.
    void DeliverResult(int32_t frameNumber, int64_t bufferId = 1) {
        std::vector<OfflineCaptureResult> results(1);
        results[0].frameNumber = frameNumber;
        results[0].outFrameInfo.buffers.resize(1);
        results[0].outFrameInfo.buffers[0].streamId = 1;
        results[0].outFrameInfo.buffers[0].bufferId = bufferId;
        EXPECT_TRUE(access.Callback()->processCaptureResult(results).isOk());
    }
    void DeliverShutter(int32_t frameNumber) {
        EXPECT_TRUE(access.Callback()->notify({Shutter(frameNumber)}).isOk());
    }

    // So many lines at the end of the client's log, which is taken.
    Lines LastLines(size_t count) {
        Lines lines = log.Take();
        EXPECT_GE(lines.size(), count);
        lines.erase(lines.begin(), lines.end() - std::min(count, lines.size()));
        return lines;
    }

    // From now on each buffer has so many scan lines, as with the gate of the plane layouts open.
    void ProvideScanlines(int32_t scanlines) {
        access.ZelInterface()->m_planeLayoutInterface = around.mapper;
        access.ZelInterface()->m_aiMapper = reinterpret_cast<AIMapper*>(&around);
        SetDisplayMapperAnswer(LumaScanlines(scanlines));
    }

    // One buffer of a stream that has just been allocated.
    ClientCaptureBuffer& Captured(uint32_t streamId, size_t index = 0) {
        return access.CaptureRequests()[streamId].buffers.at(index);
    }

    LogCapture log;
    DataFolder data;
    struct Surroundings {
        Surroundings() {
            EXPECT_EQ(mapper->registerAsService(), 0);
            allocator->suffix = "none";  // the library that nothing provides
            SetService(kAllocatorInstance, allocator->asBinder());
            SetService(kServiceInstance, service->asBinder());
            SetDisplayMapperAnswer(nullptr);
        }
        ~Surroundings() {  // nobody finds what points into them
            SetService(kAllocatorInstance, {});
            SetService(kServiceInstance, {});
        }
        Calls calls;
        ::android::sp<MemoryMapper> mapper = new MemoryMapper(&calls);
        std::shared_ptr<FakeAllocator> allocator =
                ::ndk::SharedRefBase::make<FakeAllocator>(&calls);
        std::shared_ptr<FakeOfflineService> service =
                ::ndk::SharedRefBase::make<FakeOfflineService>();
        std::shared_ptr<FakeSession> session = service->session;
    } around;

  private:
    alignas(OfflineCameraClient) char m_storage[sizeof(OfflineCameraClient)];

  public:
    OfflineCameraClient& client;
    OfflineCameraClientAccess access;
};

}  // namespace test
