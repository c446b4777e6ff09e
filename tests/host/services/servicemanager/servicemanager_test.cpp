// The service manager process: names, replacement, death, and one at a time in a folder.
#include <android/binder_manager.h>
#include <gmock/gmock.h>
#include <host_service_manager.h>

#include <future>

#include "tests/host/libbinder_ndk/peer_service.h"
#include "tests/host/libbinder_ndk/test_bus.h"
#include "tests/support/temporary_folder.h"

namespace {

ndk::SpAIBinder Check(const std::string& name) {
    return ndk::SpAIBinder(AServiceManager_checkService(name.c_str()));
}

binder_exception_t Add(const ndk::SpAIBinder& service, const std::string& name) {
    return AServiceManager_addService(service.get(), name.c_str());
}

std::vector<std::string> ListServices() {
    std::vector<std::string> names;
    const auto collect = [](const char* name, void* context) {
        static_cast<std::vector<std::string>*>(context)->push_back(name);
    };
    EXPECT_EQ(AServiceManager_forEachService(&names, collect), STATUS_OK);
    return names;
}

TEST(ServiceManager, FindsReplacesAndForgetsServices) {
    Peer peer = StartPeer();
    Peer replaced = StartPeer();
    const std::string name = NewServiceName();
    const std::string replacedOnly = NewServiceName();
    EXPECT_EQ(Check(name).get(), nullptr);
    const int before = LivePeerObjects();
    {
        const ndk::SpAIBinder own = NewPeerObject();
        auto waiting = std::async(std::launch::async, [&] {
            return ndk::SpAIBinder(AServiceManager_waitForService(name.c_str()));
        });
        ASSERT_EQ(Add(own, name), EX_NONE);
        EXPECT_EQ(waiting.get(), own);
        EXPECT_EQ(Check(name), own);
    }
    EXPECT_EQ(LivePeerObjects(), before + 1) << "the service manager holds it";
    ASSERT_EQ(Add(replaced.binder, replacedOnly), EX_NONE);
    ASSERT_EQ(Add(replaced.binder, name), EX_NONE);
    EXPECT_TRUE(Eventually([&] { return LivePeerObjects() == before; }));
    ASSERT_EQ(Add(peer.binder, name), EX_NONE);
    replaced.Signal(SIGKILL);
    EXPECT_TRUE(Eventually([&] { return Check(replacedOnly).get() == nullptr; }));
    EXPECT_EQ(Check(name), peer.binder);
    EXPECT_THAT(ListServices(), testing::Contains(name));

    peer.Signal(SIGKILL);
    // A dead service cannot be looked up, even before the service manager has forgotten it.
    EXPECT_TRUE(Eventually([&] { return Check(name).get() == nullptr; }));
    EXPECT_TRUE(Eventually([&] {
        const std::vector<std::string> names = ListServices();
        return std::find(names.begin(), names.end(), name) == names.end();
    }));
    EXPECT_EQ(Add(peer.binder, NewServiceName()), EX_TRANSACTION_FAILED) << "it is dead";
    EXPECT_NE(Add(NewPeerObject(), "no name"), EX_NONE);
}

TEST(ServiceManager, IsOneAtATimeInAFolder) {
    const TemporaryFolder folder("servicemanager");
    const end_to_end::Subprocess::Environment environment = {{"STANDIN_BINDER_DIR", folder.Path()}};
    const auto startManager = [&] { return StartChild({SERVICEMANAGER_PROGRAM}, environment); };
    const auto startPeerHere = [&] { return StartPeerProgram(NewServiceName(), environment); };
    const auto answersAPeer = [&] {
        return Eventually([&] { return startPeerHere()->WaitForNext("\n"); });
    };
    EXPECT_EQ(startPeerHere()->Finish().status, 3) << "there is none";
    const Child first = startManager();
    ASSERT_TRUE(answersAPeer());
    EXPECT_EQ(startManager()->Finish().status, 1) << "the second one gives up";
    kill(first->Pid(), SIGKILL);
    first->Finish();
    EXPECT_EQ(startPeerHere()->Finish().status, 3) << "a socket without a process refuses at once";
    const Child next = startManager();
    EXPECT_TRUE(answersAPeer()) << "the dead one's socket is taken over";
}

}  // namespace
