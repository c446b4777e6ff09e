// The service manager process: names, replacement, death, and several of them in one folder.
#include <android/binder_manager.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/host/libbinder_ndk/list_services.h"
#include "tests/host/libbinder_ndk/peer_service.h"
#include "tests/host/libbinder_ndk/test_bus.h"
#include "tests/support/temporary_folder.h"

namespace {

ndk::SpAIBinder check(const std::string& name) {
    return ndk::SpAIBinder(AServiceManager_checkService(name.c_str()));
}

TEST(ServiceManager, FindsAServiceOfThisProcessAsTheObjectItself) {
    busFolder();
    const std::string name = newServiceName();
    ndk::SpAIBinder service = newPeerObject();
    EXPECT_EQ(check(name).get(), nullptr);
    ASSERT_EQ(AServiceManager_addService(service.get(), name.c_str()), EX_NONE);
    EXPECT_EQ(check(name), service);
    EXPECT_THAT(listServices(), testing::Contains(name));
}

TEST(ServiceManager, ReplacesAServiceOfTheSameName) {
    Peer peer = startPeer();
    const std::string name = newServiceName();
    const int before = livePeerObjects();
    ASSERT_EQ(AServiceManager_addService(newPeerObject().get(), name.c_str()), EX_NONE);
    EXPECT_EQ(livePeerObjects(), before + 1) << "the service manager holds it";
    ASSERT_EQ(AServiceManager_addService(peer.binder.get(), name.c_str()), EX_NONE);
    EXPECT_EQ(check(name), peer.binder);
    EXPECT_TRUE(eventually([&]() { return livePeerObjects() == before; }));
}

TEST(ServiceManager, ForgetsAServiceThatDies) {
    Peer peer = startPeer();
    const std::string name = newServiceName();
    ASSERT_EQ(AServiceManager_addService(peer.binder.get(), name.c_str()), EX_NONE);
    peer.process.signal(SIGKILL);
    EXPECT_TRUE(eventually([&]() { return check(name).get() == nullptr; }));
    EXPECT_THAT(listServices(), testing::Not(testing::Contains(name)));
}

TEST(ServiceManager, KeepsTheNewServiceWhenTheReplacedOneDies) {
    Peer old = startPeer();
    Peer current = startPeer();
    const std::string shared = newServiceName();
    const std::string onlyOld = newServiceName();
    ASSERT_EQ(AServiceManager_addService(old.binder.get(), shared.c_str()), EX_NONE);
    ASSERT_EQ(AServiceManager_addService(old.binder.get(), onlyOld.c_str()), EX_NONE);
    ASSERT_EQ(AServiceManager_addService(current.binder.get(), shared.c_str()), EX_NONE);
    old.process.signal(SIGKILL);
    EXPECT_TRUE(eventually([&]() { return check(onlyOld).get() == nullptr; }));
    EXPECT_EQ(check(shared), current.binder);
}

TEST(ServiceManager, RefusesADeadService) {
    Peer peer = startPeer();
    peer.process.signal(SIGKILL);
    peer.process.wait();
    // Once the service manager has noticed.
    const std::string name = newServiceName();
    EXPECT_TRUE(eventually([&]() {
        return AServiceManager_addService(peer.binder.get(), name.c_str()) == EX_TRANSACTION_FAILED;
    }));
    EXPECT_TRUE(eventually([&]() { return check(name).get() == nullptr; }));
}

TEST(ServiceManager, TakesOnlySoManyServicesOfAProcess) {
    Peer other = startPeer();
    const size_t before = listServices().size();
    {
        Peer peer = startPeer();
        binder_exception_t last = EX_NONE;
        for (int i = 0; last == EX_NONE && i < 3000; ++i) {
            last = AServiceManager_addService(peer.binder.get(), newServiceName().c_str());
        }
        EXPECT_EQ(last, EX_TRANSACTION_FAILED);
        EXPECT_LE(listServices().size() - before, 257u);
        EXPECT_EQ(add(startPeer().binder, 1), 2) << "another process still adds its own";
    }
    EXPECT_TRUE(eventually([&]() { return listServices().size() == before; }));
    EXPECT_EQ(AServiceManager_addService(other.binder.get(), newServiceName().c_str()), EX_NONE);
}

// A folder of its own for service managers that the test starts.
class OwnFolder : public testing::Test {
  protected:
    void SetUp() override { busFolder(); }
    Child startManager() { return Child({SERVICEMANAGER_PROGRAM}, mEnvironment); }
    Child startPeerHere() { return Child(peerCommand(newServiceName()), mEnvironment); }
    bool answersAPeer() {
        return eventually([&]() { return startPeerHere().waitForLine(); });
    }
    const TemporaryFolder mFolder{"servicemanager"};
    end_to_end::Subprocess::Environment mEnvironment = {{"STANDIN_BINDER_DIR", mFolder.path()}};
};

TEST_F(OwnFolder, AcceptsOneServiceManagerAtATime) {
    Child first = startManager();
    ASSERT_TRUE(answersAPeer());
    EXPECT_EQ(startManager().wait(), 1) << "the second one gives up";
    first.signal(SIGKILL);
    first.wait();
    EXPECT_EQ(startPeerHere().wait(), 3) << "a socket without a process refuses at once";
    // As another one would that is about to take over.
    const int folder = open(mFolder.path().c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(flock(folder, LOCK_EX), 0);
    EXPECT_EQ(startManager().wait(), 1);
    close(folder);
    Child next = startManager();
    EXPECT_TRUE(answersAPeer()) << "the dead one's socket is taken over";
}

TEST_F(OwnFolder, WithoutAServiceManagerAddsNothing) {
    EXPECT_EQ(startPeerHere().wait(), 3);
}

TEST_F(OwnFolder, WithTooLongAPathIsRefused) {
    const std::string folder = mFolder.path(std::string(100, 'x'));
    ASSERT_EQ(mkdir(folder.c_str(), 0700), 0);
    mEnvironment = {{"STANDIN_BINDER_DIR", folder}};
    EXPECT_EQ(startManager().wait(), 1);
    EXPECT_EQ(startPeerHere().wait(), 3);
}

}  // namespace
