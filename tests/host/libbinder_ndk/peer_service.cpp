// What a peer of the tests answers.
#include "tests/host/libbinder_ndk/peer_service.h"

#include <host_binder_trace.h>
#include <unistd.h>

#include <atomic>
#include <map>
#include <mutex>
#include <tuple>

namespace {

using Bytes = std::vector<uint8_t>;
using Fd = ndk::ScopedFileDescriptor;

std::mutex gMutex;  // guards the two that follow
ndk::SpAIBinder gHeld;
int32_t gCount = 0;
thread_local int tAdds = 0;
std::atomic<int> gLive{0};

using Method = std::function<binder_status_t(const AParcel* in, AParcel* out)>;

// Reads the arguments, and calls the function with the answer's parcel and them.
template <typename... Arguments, typename Function>
Method Takes(Function function) {
    return [function](const AParcel* in, AParcel* out) -> binder_status_t {
        std::tuple<Arguments...> values;
        const auto read = [in](auto&... value) { return Reads(&value...)(in); };
        const auto call = [&](auto&... value) { return function(out, value...); };
        const binder_status_t status = std::apply(read, values);
        return status == STATUS_OK ? std::apply(call, values) : status;
    };
}

const std::map<transaction_code_t, Method> kMethods = {
        {kAdd, Takes<int32_t>([](AParcel* out, int32_t value) {
             ++tAdds;
             return Writes(value + 1)(out);
         })},
        {kEcho, Takes<Bytes, std::vector<Fd>>([](AParcel* out, Bytes& bytes, std::vector<Fd>& fds) {
             return Writes(bytes, fds)(out);
         })},
        {kHold, Takes<ndk::SpAIBinder>([](AParcel*, ndk::SpAIBinder& binder) {
             std::lock_guard<std::mutex> lock(gMutex);
             std::swap(gHeld, binder);  // the one before ends after the lock
             return STATUS_OK;
         })},
        {kGetHeld, Takes<>([](AParcel* out) {
             std::lock_guard<std::mutex> lock(gMutex);
             return Writes(gHeld)(out);
         })},
        {kCall,
         Takes<ndk::SpAIBinder, int32_t>([](AParcel* out, ndk::SpAIBinder& target, int32_t value) {
             const auto status = CallPeer(target, kAdd, Writes(value), Reads(&value));
             return status == STATUS_OK ? Writes(value)(out) : status;
         })},
        {kNewObject, Takes<>([](AParcel* out) { return Writes(NewPeerObject())(out); })},
        {kLiveObjects, Takes<>([](AParcel* out) { return Writes(LivePeerObjects())(out); })},
        {kBlock, Takes<Fd, Fd>([](AParcel*, Fd& entered, Fd& go) {
             char byte = 1;
             const bool moved =
                     write(entered.get(), &byte, 1) == 1 && read(go.get(), &byte, 1) == 1;
             return moved ? STATUS_OK : STATUS_FAILED_TRANSACTION;
         })},
        {kCount, Takes<int32_t>([](AParcel* out, int32_t value) {
             std::lock_guard<std::mutex> lock(gMutex);
             if (value == gCount + 1) gCount = value;
             return Writes(gCount)(out);
         })},
        {kFork, Takes<>([](AParcel*) {
             char byte;
             if (fork() == 0) _exit(static_cast<int>(read(STDIN_FILENO, &byte, 1)));
             return STATUS_OK;
         })},
        {kFail, Takes<int32_t>([](AParcel*, int32_t status) { return status; })},
        {kRefuse, Takes<std::string>([](AParcel* out, const std::string& message) {
             const auto refusal = ndk::ScopedAStatus::fromServiceSpecificErrorWithMessage(
                     AIBinder_getCallingPid(), message.c_str());
             return AParcel_writeStatusHeader(out, refusal.get());
         })},
};

binder_status_t Handle(AIBinder*, transaction_code_t code, const AParcel* in, AParcel* out) {
    const auto method = kMethods.find(code);
    return method == kMethods.end() ? STATUS_UNKNOWN_TRANSACTION : method->second(in, out);
}

AIBinder_Class* MakeClass() {
    const auto create = [](void*) -> void* {
        ++gLive;
        return nullptr;
    };
    AIBinder_Class* clazz = AIBinder_Class_define(
            "test.IPeer", create, [](void*) { --gLive; }, Handle);
    static constexpr const char* kNames[] = {"add"};
    AIBinder_Class_setTransactionNames(clazz, kNames, 1);
    return clazz;
}

}  // namespace

const AIBinder_Class* PeerClass() {
    static const AIBinder_Class* const clazz = MakeClass();
    return clazz;
}

ndk::SpAIBinder NewPeerObject() {
    return ndk::SpAIBinder(AIBinder_new(PeerClass(), nullptr));
}

int LivePeerObjects() {
    return gLive;
}

int AddsOnThisThread() {
    return tAdds;
}

binder_status_t CallPeer(const ndk::SpAIBinder& binder, transaction_code_t code,
                         const std::function<binder_status_t(AParcel*)>& write,
                         const std::function<binder_status_t(const AParcel*)>& read,
                         binder_flags_t flags) {
    if (!AIBinder_associateClass(binder.get(), PeerClass())) {
        return AIBinder_isAlive(binder.get()) ? STATUS_BAD_TYPE : STATUS_DEAD_OBJECT;
    }
    ndk::ScopedAParcel in;
    binder_status_t status = AIBinder_prepareTransaction(binder.get(), in.getR());
    if (status == STATUS_OK && write) status = write(in.get());
    if (status != STATUS_OK) return status;
    ndk::ScopedAParcel out;
    status = AIBinder_transact(binder.get(), code, in.getR(), out.getR(), flags);
    return status == STATUS_OK && read ? read(out.get()) : status;
}
