// Calls between processes: values, descriptors, failures, callbacks.
#include <android/binder_manager.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <numeric>

#include "host/libbinder_ndk/wire_format.h"
#include "tests/host/libbinder_ndk/peer_service.h"
#include "tests/host/libbinder_ndk/plain_class.h"
#include "tests/host/libbinder_ndk/test_bus.h"

namespace {

ndk::ScopedFileDescriptor fileWith(const std::string& text) {
    ndk::ScopedFileDescriptor fd(memfd_create("test", MFD_CLOEXEC));
    EXPECT_EQ(write(fd.get(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
    return fd;
}

std::string textOf(const ndk::ScopedFileDescriptor& fd) {
    char text[64] = {};
    const ssize_t size = pread(fd.get(), text, sizeof(text), 0);
    return size < 0 ? "unreadable" : std::string(text, static_cast<size_t>(size));
}

binder_status_t echoFds(const ndk::SpAIBinder& peer,
                        const std::vector<ndk::ScopedFileDescriptor>& fds,
                        std::vector<ndk::ScopedFileDescriptor>* back) {
    return callPeer(peer, kEchoFds, writes(fds), reads(back));
}

binder_status_t echoBytes(const ndk::SpAIBinder& peer, const std::vector<uint8_t>& bytes,
                          std::vector<uint8_t>* back) {
    return callPeer(peer, kEchoBytes, writes(bytes), reads(back));
}

TEST(RemoteCall, TellsTheCalleeWhoCalls) {
    Peer peer = startPeer();
    EXPECT_TRUE(AIBinder_isRemote(peer.binder.get()));
    EXPECT_EQ(AIBinder_ping(peer.binder.get()), STATUS_OK);
    int32_t pid = 0;
    uint32_t uid = 0;
    ASSERT_EQ(callPeer(peer.binder, kCaller, nullptr, reads(&pid, &uid)), STATUS_OK);
    EXPECT_EQ(pid, getpid());
    EXPECT_EQ(uid, getuid());
}

TEST(RemoteCall, PassesDescriptorsBothWays) {
    Peer peer = startPeer();
    std::vector<ndk::ScopedFileDescriptor> fds;
    fds.push_back(fileWith("one"));
    fds.push_back(fileWith("two"));
    std::vector<ndk::ScopedFileDescriptor> back;
    ASSERT_EQ(echoFds(peer.binder, fds, &back), STATUS_OK);
    ASSERT_EQ(back.size(), 2u);
    EXPECT_EQ(textOf(back[0]), "one");
    EXPECT_EQ(textOf(back[1]), "two");
    EXPECT_TRUE((fcntl(back[0].get(), F_GETFD) & FD_CLOEXEC) != 0);
}

TEST(RemoteCall, LimitsDescriptorsAndSize) {
    Peer peer = startPeer();
    ndk::ScopedFileDescriptor file = fileWith("x");
    std::vector<ndk::ScopedFileDescriptor> fds;
    for (uint32_t i = 0; i < hostbinder::kMaxDescriptors; ++i) fds.push_back(file.dup());
    std::vector<ndk::ScopedFileDescriptor> back;
    EXPECT_EQ(echoFds(peer.binder, fds, &back), STATUS_OK);
    EXPECT_EQ(back.size(), fds.size());
    fds.push_back(file.dup());
    EXPECT_EQ(echoFds(peer.binder, fds, &back), STATUS_FAILED_TRANSACTION);

    std::vector<uint8_t> bytes(hostbinder::kMaxParcelBytes - 256);
    std::iota(bytes.begin(), bytes.end(), uint8_t{0});
    std::vector<uint8_t> echoed;
    EXPECT_EQ(echoBytes(peer.binder, bytes, &echoed), STATUS_OK);
    EXPECT_TRUE(echoed == bytes);
    bytes.resize(hostbinder::kMaxParcelBytes);
    EXPECT_EQ(echoBytes(peer.binder, bytes, &echoed), STATUS_FAILED_TRANSACTION);
    EXPECT_EQ(add(peer.binder, 1), 2) << "the connection survives what is refused";
}

TEST(RemoteCall, ReturnsTheTransportStatusOfTheMethod) {
    Peer peer = startPeer();
    const auto failWith = [&](int32_t status) {
        return callPeer(peer.binder, kFail, writes(status));
    };
    EXPECT_EQ(failWith(STATUS_WOULD_BLOCK), STATUS_WOULD_BLOCK);
    EXPECT_EQ(failWith(STATUS_BAD_INDEX), STATUS_BAD_INDEX);
    EXPECT_EQ(failWith(12345), STATUS_UNKNOWN_ERROR);
    EXPECT_EQ(callPeer(peer.binder, kPeerRequestEnd), STATUS_UNKNOWN_TRANSACTION);
}

TEST(RemoteCall, RefusesAnotherInterfacesHeader) {
    Peer peer = startPeer();
    // A class of the same name whose requests carry no header: the test writes its own.
    AIBinder_Class* bare = newPlainClass("test.IPeer");
    AIBinder_Class_disableInterfaceTokenHeader(bare);
    ASSERT_TRUE(AIBinder_associateClass(peer.binder.get(), bare));
    for (const char* descriptor : {"test.IPeer", "test.IOther"}) {
        ndk::ScopedAParcel in;
        ndk::ScopedAParcel out;
        ASSERT_EQ(AIBinder_prepareTransaction(peer.binder.get(), in.getR()), STATUS_OK);
        AParcel_writeUint32(in.get(), hostbinder::kStrictModePresent);
        AParcel_writeInt32(in.get(), hostbinder::kWorkSourceUnset);
        AParcel_writeUint32(in.get(), hostbinder::kHeaderTag);
        ndk::AParcel_writeString(in.get(), std::string(descriptor));
        AParcel_writeInt32(in.get(), 1);
        EXPECT_EQ(AIBinder_transact(peer.binder.get(), kAdd, in.getR(), out.getR(), 0),
                  descriptor == std::string("test.IPeer") ? STATUS_OK : STATUS_BAD_TYPE);
    }
}

TEST(RemoteCall, RefusesAClassWithAnotherDescriptor) {
    Peer peer = startPeer();
    AIBinder_Class* other = newPlainClass("test.IOther");
    EXPECT_FALSE(AIBinder_associateClass(peer.binder.get(), other));
    EXPECT_EQ(AIBinder_getClass(peer.binder.get()), nullptr);
    EXPECT_TRUE(AIBinder_associateClass(peer.binder.get(), peerClass()));
    EXPECT_EQ(AIBinder_getClass(peer.binder.get()), peerClass());
}

TEST(Callback, RunsOnTheWaitingThread) {
    Peer peer = startPeer();
    ndk::SpAIBinder own = newPeerObject();
    EXPECT_EQ(callThrough(peer.binder, own, 7), 8);
    EXPECT_EQ(lastAddThread(), std::this_thread::get_id());
}

TEST(Callback, NestsAsDeepAsTheCallsDo) {
    Peer peer = startPeer({"--max", "0"});
    EXPECT_EQ(pingPong(peer.binder, newPeerObject(), 12), 12);
}

TEST(ExitHandler, CanStillCall) {
    Peer peer = startPeer();
    const std::string name = newServiceName();
    ASSERT_EQ(AServiceManager_addService(peer.binder.get(), name.c_str()), EX_NONE);
    Child caller(peerCommand(newServiceName(), {"--call-at-exit", name}));
    EXPECT_EQ(caller.wait(), 0);
    EXPECT_EQ(recordsOf(peer.binder), std::vector<int32_t>{42});
}

}  // namespace
