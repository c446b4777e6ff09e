// What a peer can send over a connection: arbitrary messages with descriptors, from a greeting that
// was accepted on. The connection holds one object and waits for the reply to call 1.
#include <android/binder_auto_utils.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <thread>

#include "fuzz_input.h"
#include "host/libbinder_ndk/endpoint.h"
#include "host/libbinder_ndk/parcel.h"
#include "tests/host/libbinder_ndk/send_bytes.h"

using namespace hostbinder;

namespace {

// Reads one value of every kind that has an object, and gives the binder back.
binder_status_t Serve(AIBinder*, transaction_code_t, const AParcel* in, AParcel* out) {
    ndk::SpAIBinder binder;
    ndk::ScopedFileDescriptor descriptor;
    AParcel_readStrongBinder(in, binder.getR());
    AParcel_readParcelFileDescriptor(in, descriptor.getR());
    if (binder.get() != nullptr) AIBinder_isRemote(binder.get());
    return AParcel_writeStrongBinder(out, binder.get());
}

LocalBinder* ServedObject() {
    static AIBinder* const object = []() {
        const auto create = [](void* data) { return data; };
        const auto destroy = [](void*) {};
        return AIBinder_new(AIBinder_Class_define("fuzz.IObject", create, destroy, Serve), nullptr);
    }();
    return object->AsLocal();
}

size_t BodySize(const FrameHeader& header) {
    return header.dataSize + uint64_t{header.objectCount} * sizeof(uint32_t) +
           uint64_t{header.referenceCount} * sizeof(ReferenceRecord);
}

// Puts our magic number into a message, and the chain of the call that the connection waits for in
// place of 1, because an input cannot know them. Whether the message is as long as its header
// announces, so that the reader does not wait for more.
bool FillIn(std::string* bytes, uint64_t chain) {
    FrameHeader header;
    if (bytes->size() < sizeof(header)) return false;
    memcpy(&header, bytes->data(), sizeof(header));
    header.magic = kFrameMagic;
    if (header.chain == 1) header.chain = chain;
    memcpy(bytes->data(), &header, sizeof(header));
    return bytes->size() == sizeof(header) + BodySize(header);
}

// The input's messages, each with its count of descriptors and its size in front. False if the
// reader may wait for the rest of one.
bool SendMessages(int fd, FuzzInput input, uint64_t chain) {
    bool whole = true;
    while (!input.Empty()) {
        const std::vector<int> descriptors(input.Take<uint8_t>() % 4, fd);
        std::string bytes(input.Bytes(input.Take<uint16_t>()));
        if (bytes.empty()) continue;
        whole = FillIn(&bytes, chain) && whole;
        if (!SendBytes(fd, bytes, descriptors, MSG_DONTWAIT)) return false;
    }
    return whole;
}

// All the bytes; false at the connection's end. The fuzzer's own timer interrupts waits.
bool ReceiveAll(int fd, void* bytes, size_t size) {
    for (size_t got = 0; got < size;) {
        const ssize_t count = recv(fd, static_cast<char*>(bytes) + got, size - got, 0);
        if (count == 0 || (count < 0 && errno != EINTR)) return false;
        if (count > 0) got += static_cast<size_t>(count);
    }
    return true;
}

// Returns when everything sent before has been dealt with, or the connection has ended.
void WaitForReader(int fd) {
    constexpr uint64_t kLastId = 0x6c617374;
    FrameHeader last{};
    last.magic = kFrameMagic;
    last.kind = FrameKind::kAcquire;
    last.id = kLastId;
    const std::string bytes(reinterpret_cast<const char*>(&last), sizeof(last));
    if (!SendBytes(fd, bytes, {}, MSG_DONTWAIT)) return;
    FrameHeader answer{};
    while (ReceiveAll(fd, &answer, sizeof(answer))) {
        if (answer.kind == FrameKind::kReply && answer.id == kLastId) return;
        std::string body(BodySize(answer), 0);
        if (!ReceiveAll(fd, body.data(), body.size())) return;
    }
}

// Fails when the process has ever more descriptors open from one input to the next.
void RequireNoDescriptorLeak() {
    const int probe = open("/dev/null", O_RDONLY | O_CLOEXEC);
    static const int first = probe;
    Require(probe >= 0 && probe < first + 64);
    close(probe);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ThreadPool::Instance().Start();
    int ends[2];
    Require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == 0);
    const auto connection =
            std::make_shared<Peer>(ends[0], "peer", PeerCredentials{getpid(), getuid()});
    uint64_t number = 0;
    Require(connection->References()->Export(ServedObject(), &number) == STATUS_OK);
    Require(number == 1);

    std::thread caller([connection]() {
        AParcel request;
        AParcel* reply = nullptr;
        if (connection->Transact(7, nullptr, 1, &request, &reply, 0) != STATUS_OK) return;
        ndk::SpAIBinder binder;
        AParcel_readStrongBinder(reply, binder.getR());
        AParcel_delete(reply);
    });
    FrameHeader call;
    Require(ReceiveAll(ends[1], &call, sizeof(call)));
    std::thread reader([connection]() { connection->RunReader(); });
    if (SendMessages(ends[1], {data, size}, call.chain)) WaitForReader(ends[1]);
    shutdown(ends[1], SHUT_WR);
    reader.join();
    caller.join();
    close(ends[1]);
    RequireNoDescriptorLeak();
    return 0;
}
