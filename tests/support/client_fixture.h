// A client of its own for each test, with fakes of everything around it. Tests are compiled without
// access control: they look at the client's private members.
#pragma once

#include <gmock/gmock.h>

#include <cstdlib>
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

namespace test {

using namespace ::vendor::zel::hardware::camera::offlinecamera::implementation;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using Lines = Words;

constexpr char kRawFile[] = "offlinecameratest/4096_3072_RAW10.raw";

// A client besides the process-wide one; in zeroed storage, as that is.
using OwnClient = std::unique_ptr<OfflineCameraClient, void (*)(OfflineCameraClient*)>;

inline OwnClient NewClient(void* storage = calloc(1, sizeof(OfflineCameraClient))) {
    return {new (storage) OfflineCameraClient(), [](OfflineCameraClient* client) {
                client->~OfflineCameraClient();
                free(client);
            }};
}

inline NotifyMsg Shutter(int32_t frameNumber) {
    return ::aidl::android::hardware::camera::device::ShutterMsg{frameNumber, 0, 0};
}

inline void ExpectIllegalArgument(const ::ndk::ScopedAStatus& status) {
    EXPECT_EQ(status.getServiceSpecificError(), 1);
    EXPECT_STREQ(status.getMessage(), "ILLEGAL_ARGUMENT");
}

// The services are up and the client is constructed; its lines so far are taken.
class ClientTest : public ::testing::Test {
  public:
    ClientTest() { log.Take(); }

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

    // Delivers a frame's buffers, each a stream and an id, as the service would.
    using Buffers = std::vector<std::pair<int32_t, int64_t>>;
    void DeliverResult(int32_t frameNumber, const Buffers& buffers = {{1, 1}}) {
        std::vector<OfflineCaptureResult> results(1);
        results[0].frameNumber = frameNumber;
        for (const auto& [streamId, id] : buffers) {
            results[0].outFrameInfo.buffers.push_back({streamId, id, {}, {}, {}, {}});
        }
        EXPECT_TRUE(client.m_callback->processCaptureResult(results).isOk());
    }
    void DeliverShutter(int32_t frameNumber) {
        EXPECT_TRUE(client.m_callback->notify({Shutter(frameNumber)}).isOk());
    }

    // From now on each buffer has so many scan lines, as with the gate of the plane layouts open.
    void ProvideScanlines(int32_t scanlines) {
        client.m_zelInterface->m_planeLayoutInterface = around.mapper;
        client.m_zelInterface->m_aiMapper = reinterpret_cast<AIMapper*>(&around);
        ::mapper::PlaneEntry luma{};
        luma.numComponents = 1;
        luma.components[0].type = 1;
        luma.scanlines = scanlines;
        TheDisplayMapper().planes = {luma};
    }

    // One buffer of a stream that has just been allocated.
    ClientCaptureBuffer& Captured(uint32_t streamId, size_t index = 0) {
        return client.m_captureRequests[streamId].buffers.at(index);
    }

    LogCapture log;
    DataFolder data;
    struct Surroundings {
        Surroundings() {
            EXPECT_EQ(mapper->registerAsService(), 0);
            allocator->suffix = "none";  // the library that nothing provides
            SetService(kAllocatorInstance, allocator->asBinder());
            SetService(kServiceInstance, service->asBinder());
        }
        ~Surroundings() {  // nothing finds what points into them
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
    OwnClient own = NewClient();
    OfflineCameraClient& client = *own;
};

}  // namespace test
