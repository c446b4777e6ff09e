// Construction, session control and destruction.

#include <cstdlib>

#include "tests/support/client_fixture.h"

namespace test {
namespace {

class Lifecycle : public ClientTest {
  public:
    // The lines of a second client's construction.
    Lines ConstructAnother() {
        OwnClient another = NewClient();
        const Lines lines = log.Take();
        another.reset();
        log.Take();
        return lines;
    }
};

TEST_F(Lifecycle, ConstructsInOrder) {
    Lines expected{"I mapper android.hardware.graphics.allocator.IAllocator/default",
                   "D Using AIDL IAllocator + HIDL IMapper v4.0",
                   "I [AIDL]OfflineCameraCallBacks constructor called",
                   "E Failed to load mapper.none.so",
                   "E Gralloc Init failed, reason zelAidlMapper getInstance failed",
                   "I [AIDL] OfflineCameraClient constructor called"};
    EXPECT_EQ(ConstructAnother(), expected);
    EXPECT_EQ(client.m_reservedList.capacity() * sizeof(client.m_reservedList[0]), 80u);

    SetService(kServiceInstance, {});
    expected.insert(expected.begin() + 3, "E getService is NULL for offlinecameraservice");
    EXPECT_EQ(ConstructAnother(), expected);

    SetService(kAllocatorInstance, {});
    EXPECT_EQ(ConstructAnother(),
              (Lines{expected[0], expected[2], expected[3],
                     "E Gralloc Init failed, reason zelAllocator getService failed", expected[6]}));
}

TEST_F(Lifecycle, StoresEachPartBeforeTheNextOneStarts) {
    void* const storage = calloc(1, sizeof(OfflineCameraClient));
    const auto* const another = static_cast<OfflineCameraClient*>(storage);
    int stored = 0;
    log.AtLine("[AIDL]OfflineCameraCallBacks constr", [&] {
        stored += another->m_grallocWrapper != nullptr && another->m_service != nullptr;
    });
    log.AtLine("Failed to load", [&] {
        stored += another->m_callback != nullptr && another->m_zelInterface->m_allocator != nullptr;
    });
    NewClient(storage);
    EXPECT_EQ(stored, 2);
}

TEST_F(Lifecycle, RegistersWhateverTheServiceAnswers) {
    client.registerClient(5);
    around.service->fails = true;
    client.registerClient(0);
    EXPECT_EQ(around.service->callback, client.m_callback);
    EXPECT_EQ(log.Take(""), (Lines{"I registerClient 5", "I [AIDL] registerClient clientId 5",
                                   "I registerClient 0", "I [AIDL] registerClient clientId 0"}));
}

TEST_F(Lifecycle, OpensAndClosesASession) {
    client.CloseOfflineSession();
    client.setOpMode(4);
    around.service->fails = true;
    client.OpenOfflineSession("no one");
    EXPECT_EQ(client.m_offlineSession, nullptr);
    EXPECT_EQ(log.Take(""), (Lines{"I [AIDL] setOpMode opMode 4", "I openOfflineSession no one"}));

    around.service->fails = false;
    client.OpenOfflineSession("offlincameratest");
    EXPECT_EQ(client.m_offlineSession, around.session);
    EXPECT_EQ(around.service->callback, client.m_callback);

    // The reference outlives the closing, whose outcome does not matter.
    client.CloseOfflineSession();
    around.session->fails = true;
    client.CloseOfflineSession();
    EXPECT_EQ(client.m_offlineSession, around.session);
    EXPECT_EQ(log.Take(""), (Lines{"I openOfflineSession offlincameratest", "I OpenOfflineSession",
                                   "I closeOfflineSession", "I CloseOfflineSession",
                                   "I closeOfflineSession", "I CloseOfflineSession"}));

    // So it does a failed opening, which then looks like one that worked.
    around.service->fails = true;
    client.OpenOfflineSession("offlincameratest");
    EXPECT_EQ(client.m_offlineSession, around.session);
    EXPECT_EQ(log.Take(), (Lines{"I OpenOfflineSession"}));
}

TEST_F(Lifecycle, DiesAtTheFirstCallThroughAnEmptyReference) {
    EXPECT_DEATH(client.ConfigureOfflineStreams("2"), "");
    SetService(kServiceInstance, {});
    const OwnClient alone = NewClient();
    EXPECT_DEATH(alone->registerClient(0), "");
    EXPECT_DEATH(alone->OpenOfflineSession("test"), "");

    native_handle* const recorded = native_handle_create(0, 0);
    client.m_allocatedHandles.insert(recorded);
    client.m_grallocWrapper.reset();
    EXPECT_DEATH(client.freeBuffer(recorded), "");
    native_handle_delete(recorded);
}

TEST_F(Lifecycle, DestructionFreesInputsAndDropsTheCallbackBeforeWhatIsDeclaredEarlier) {
    ConfigureB2Y();
    ASSERT_EQ(client.ProcessOfflineRequest(), 0);
    native_handle* const input = Captured(0).importedBuf;
    native_handle* const output = Captured(1).importedBuf;
    around.service->callback = nullptr;
    log.Take();
    const auto references = [this] {  // to session, service and, by the wrapper, allocator
        return std::vector<long>{around.session.use_count(), around.service.use_count(),
                                 around.allocator.use_count()};
    };
    const std::vector<long> before = references();
    std::vector<long> left;
    log.AtLine("[AIDL]OfflineCameraCallBacks destr", [&] { left = references(); });
    own.reset();
    EXPECT_EQ(left, before);
    EXPECT_EQ(references(), (std::vector<long>{before[0] - 1, before[1] - 1, before[2] - 1}));
    EXPECT_NE(around.mapper->Memory(output), nullptr);
    EXPECT_EQ(log.Take(""), (Lines{Format("I freeBuffer %p", input),
                                   "I [AIDL] OfflineCameraClient destructor called",
                                   "I [AIDL]OfflineCameraCallBacks destructor called"}));
}

}  // namespace
}  // namespace test
