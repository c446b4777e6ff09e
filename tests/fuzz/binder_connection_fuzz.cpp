// What a peer can send over a connection: arbitrary messages with descriptors, from a greeting that
// was accepted on. The connection holds one object, number 1, and waits for the reply to call 1.
#include <android/binder_auto_utils.h>
#include <sys/socket.h>
#include <unistd.h>

#include <thread>

#include "fuzz_parcel.h"
#include "host/libbinder_ndk/connection.h"
#include "host/libbinder_ndk/thread_pool.h"

using namespace hostbinder;

namespace {

// Reads one value of every kind that has an object, and gives the binder back.
binder_status_t serve(AIBinder*, transaction_code_t, const AParcel* in, AParcel* out) {
    ndk::SpAIBinder binder;
    ndk::ScopedFileDescriptor descriptor;
    AParcel_readStrongBinder(in, binder.getR());
    AParcel_readParcelFileDescriptor(in, descriptor.getR());
    if (binder.get() != nullptr) AIBinder_isRemote(binder.get());
    return AParcel_writeStrongBinder(out, binder.get());
}

LocalBinder* servedObject() {
    static AIBinder* const object = []() {
        const auto create = [](void* data) { return data; };
        const auto destroy = [](void*) {};
        return AIBinder_new(AIBinder_Class_define("fuzz.IObject", create, destroy, serve), nullptr);
    }();
    return object->asLocal();
}

// The input's messages, each with its descriptors' count and its size in front; the magic number is
// ours. What does not fit into the socket is left out.
void sendMessages(int fd, FuzzInput input) {
    while (input.left() > 0) {
        const size_t count = input.take<uint8_t>() % 4;
        std::string bytes = input.bytes(input.take<uint16_t>());
        if (bytes.size() >= sizeof(FrameHeader)) memcpy(&bytes[0], &kFrameMagic, sizeof(uint32_t));
        iovec part{&bytes[0], bytes.size()};
        alignas(cmsghdr) char control[CMSG_SPACE(4 * sizeof(int))] = {};
        msghdr message{};
        message.msg_iov = &part;
        message.msg_iovlen = 1;
        if (count > 0) {
            message.msg_control = control;
            message.msg_controllen = CMSG_SPACE(count * sizeof(int));
            cmsghdr* entry = CMSG_FIRSTHDR(&message);
            entry->cmsg_level = SOL_SOCKET;
            entry->cmsg_type = SCM_RIGHTS;
            entry->cmsg_len = CMSG_LEN(count * sizeof(int));
            const int descriptors[4] = {fd, fd, fd, fd};
            memcpy(CMSG_DATA(entry), descriptors, count * sizeof(int));
        }
        if (!bytes.empty() && sendmsg(fd, &message, MSG_NOSIGNAL | MSG_DONTWAIT) < 0) break;
    }
    shutdown(fd, SHUT_WR);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    int ends[2];
    require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == 0);
    auto connection =
            std::make_shared<Connection>(ends[0], "peer", PeerCredentials{getpid(), getuid()});
    uint64_t number = 0;
    static PeerObjects* const otherPeer = new PeerObjects;  // keeps the number from iteration to
                                                            // iteration
    ObjectTable& table = ObjectTable::instance();
    if (otherPeer->held.empty()) require(table.exportTo(otherPeer, servedObject(), &number));
    require(table.exportTo(connection->objects(), servedObject(), &number) && number == 1);

    std::thread caller([connection]() {
        AParcel request;
        AParcel* reply = nullptr;
        if (connection->transact(7, nullptr, 1, &request, &reply, 0) != STATUS_OK) return;
        ndk::SpAIBinder binder;
        AParcel_readStrongBinder(reply, binder.getR());
        AParcel_delete(reply);
    });
    FrameHeader call;
    require(recv(ends[1], &call, sizeof(call), MSG_WAITALL) == sizeof(call));
    sendMessages(ends[1], {data, size});
    connection->runReader();
    ThreadPool::instance().runQueued();
    caller.join();
    close(ends[1]);
    connection.reset();
    requireNoDescriptorLeak();
    return 0;
}
