// What a peer of the tests answers.
#include "tests/host/libbinder_ndk/peer_service.h"

#include <host_binder_trace.h>
#include <unistd.h>

#include <atomic>
#include <mutex>

namespace {

struct State {
    std::mutex mutex;  // guards what follows
    ndk::SpAIBinder held;
    std::vector<int32_t> records;
    std::thread::id addThread;
    std::atomic<int> live{0};
};

State& state() {
    static State* const shared = new State;
    return *shared;
}

template <typename T>
T locked(T State::*member) {
    std::lock_guard<std::mutex> lock(state().mutex);
    return state().*member;
}

// The answer is the argument.
template <typename T>
binder_status_t echo(const AParcel* in, AParcel* out) {
    std::vector<T> values;
    const binder_status_t status = reads(&values)(in);
    return status == STATUS_OK ? writes(values)(out) : status;
}

binder_status_t holdBinder(const AParcel* in) {
    ndk::SpAIBinder binder;  // the one before ends after the lock
    const binder_status_t status = reads(&binder)(in);
    std::lock_guard<std::mutex> lock(state().mutex);
    std::swap(state().held, binder);
    return status;
}

binder_status_t callBinder(const AParcel* in, AParcel* out) {
    ndk::SpAIBinder target;
    int32_t value = 0;
    binder_status_t status = reads(&target, &value)(in);
    if (status != STATUS_OK) return status;
    const int32_t answer = add(target, value, &status);
    return status == STATUS_OK ? writes(answer)(out) : status;
}

binder_status_t block(const AParcel* in) {
    ndk::ScopedFileDescriptor entered;
    ndk::ScopedFileDescriptor go;
    const binder_status_t status = reads(&entered, &go)(in);
    if (status != STATUS_OK) return status;
    char byte = 1;
    const bool moved = write(entered.get(), &byte, 1) == 1 && read(go.get(), &byte, 1) == 1;
    return moved ? STATUS_OK : STATUS_FAILED_TRANSACTION;
}

binder_status_t handleNumber(transaction_code_t code, const AParcel* in, AParcel* out) {
    int32_t value = 0;
    const binder_status_t status = reads(&value)(in);
    if (status != STATUS_OK || code == kFail) return status == STATUS_OK ? value : status;
    std::lock_guard<std::mutex> lock(state().mutex);
    if (code == kRecord) {
        state().records.push_back(value);
        return STATUS_OK;
    }
    state().addThread = std::this_thread::get_id();
    return writes(value + 1)(out);
}

binder_status_t handle(AIBinder*, transaction_code_t code, const AParcel* in, AParcel* out) {
    switch (code) {
        case kAdd:
        case kRecord:
        case kFail:
            return handleNumber(code, in, out);
        case kEchoFds:
            return echo<ndk::ScopedFileDescriptor>(in, out);
        case kEchoBytes:
            return echo<uint8_t>(in, out);
        case kHold:
            return holdBinder(in);
        case kGetHeld:
            return writes(locked(&State::held))(out);
        case kRecords:
            return writes(locked(&State::records))(out);
        case kCall:
            return callBinder(in, out);
        case kNewObject:
            return writes(newPeerObject())(out);
        case kLiveObjects:
            return writes(livePeerObjects())(out);
        case kBlock:
            return block(in);
        case kCountFds:
            return writes(countOpenDescriptors())(out);
        case kCaller:
            return writes(int32_t{AIBinder_getCallingPid()},
                          static_cast<int32_t>(AIBinder_getCallingUid()))(out);
        default:
            return STATUS_UNKNOWN_TRANSACTION;
    }
}

AIBinder_Class* makeClass() {
    AIBinder_Class* clazz = AIBinder_Class_define(
            "test.IPeer",
            [](void*) -> void* {
                ++state().live;
                return nullptr;
            },
            [](void*) { --state().live; }, handle);
    static constexpr const char* kNames[] = {"add", "echoFds", "echoBytes"};
    AIBinder_Class_setTransactionNames(clazz, kNames, 3);
    return clazz;
}

}  // namespace

const AIBinder_Class* peerClass() {
    static const AIBinder_Class* const clazz = makeClass();
    return clazz;
}

ndk::SpAIBinder newPeerObject() {
    return ndk::SpAIBinder(AIBinder_new(peerClass(), nullptr));
}

int livePeerObjects() {
    return state().live;
}

std::thread::id lastAddThread() {
    return locked(&State::addThread);
}

binder_status_t callPeer(const ndk::SpAIBinder& binder, transaction_code_t code,
                         const std::function<binder_status_t(AParcel*)>& write,
                         const std::function<binder_status_t(const AParcel*)>& read,
                         binder_flags_t flags) {
    if (!AIBinder_associateClass(binder.get(), peerClass())) {
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

int32_t askPeer(const ndk::SpAIBinder& binder, transaction_code_t code,
                const std::function<binder_status_t(AParcel*)>& write, binder_status_t* status) {
    int32_t answer = -1;
    const binder_status_t result = callPeer(binder, code, write, reads(&answer));
    if (status != nullptr) *status = result;
    return answer;
}

int32_t add(const ndk::SpAIBinder& binder, int32_t value, binder_status_t* status) {
    return askPeer(binder, kAdd, writes(value), status);
}

int32_t callThrough(const ndk::SpAIBinder& via, const ndk::SpAIBinder& target, int32_t value,
                    binder_status_t* status) {
    return askPeer(via, kCall, writes(target, value), status);
}

std::vector<int32_t> recordsOf(const ndk::SpAIBinder& binder) {
    std::vector<int32_t> records;
    callPeer(binder, kRecords, nullptr, reads(&records));
    return records;
}

binder_status_t hold(const ndk::SpAIBinder& peer, const ndk::SpAIBinder& object,
                     binder_flags_t flags) {
    return callPeer(peer, kHold, writes(object), nullptr, flags);
}

ndk::SpAIBinder getBinder(const ndk::SpAIBinder& peer, transaction_code_t code) {
    ndk::SpAIBinder binder;
    callPeer(peer, code, nullptr, reads(&binder));
    return binder;
}
