// What a peer of the tests answers.
#include "tests/host/libbinder_ndk/peer_service.h"

#include <android/binder_process.h>
#include <host_binder_trace.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <set>

namespace {

struct State {
    std::mutex mutex;
    ndk::SpAIBinder held;
    std::vector<int32_t> records;
    int blocked = 0;
    int mostBlocked = 0;
    std::thread::id addThread;
    std::atomic<int> live{0};
};

State& state() {
    static State* const shared = new State;
    return *shared;
}

// The answer is the argument.
template <typename T>
binder_status_t echo(const AParcel* in, AParcel* out) {
    std::vector<T> values;
    const binder_status_t status = ndk::AParcel_readVector(in, &values);
    return status == STATUS_OK ? ndk::AParcel_writeVector(out, values) : status;
}

binder_status_t holdBinder(const AParcel* in) {
    ndk::SpAIBinder binder;
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

binder_status_t playPingPong(const AParcel* in, AParcel* out) {
    ndk::SpAIBinder other;
    ndk::SpAIBinder self;
    int32_t depth = 0;
    binder_status_t status = reads(&other, &self, &depth)(in);
    int32_t answer = 0;
    if (status == STATUS_OK && depth > 1) answer = pingPong(other, self, depth - 1, &status);
    return status == STATUS_OK ? writes(answer + 1)(out) : status;
}

binder_status_t block(const AParcel* in) {
    ndk::ScopedFileDescriptor entered;
    ndk::ScopedFileDescriptor go;
    const binder_status_t status = reads(&entered, &go)(in);
    if (status != STATUS_OK) return status;
    {
        std::lock_guard<std::mutex> lock(state().mutex);
        state().mostBlocked = std::max(state().mostBlocked, ++state().blocked);
    }
    char byte = 1;
    const bool moved = write(entered.get(), &byte, 1) == 1 && read(go.get(), &byte, 1) == 1;
    std::lock_guard<std::mutex> lock(state().mutex);
    --state().blocked;
    return moved ? STATUS_OK : STATUS_FAILED_TRANSACTION;
}

binder_status_t handleObjects(transaction_code_t code, const AParcel* in, AParcel* out) {
    switch (code) {
        case kHold:
            return holdBinder(in);
        case kGetHeld: {
            std::lock_guard<std::mutex> lock(state().mutex);
            return writes(state().held)(out);
        }
        case kDrop: {
            ndk::SpAIBinder dropped;
            std::lock_guard<std::mutex> lock(state().mutex);
            std::swap(dropped, state().held);
            return STATUS_OK;
        }
        case kCall:
            return callBinder(in, out);
        case kPingPong:
            return playPingPong(in, out);
        case kNewObject:
            return writes(newPeerObject())(out);
        case kLiveObjects:
            return writes(livePeerObjects())(out);
        default:
            return STATUS_UNKNOWN_TRANSACTION;
    }
}

binder_status_t handle(AIBinder*, transaction_code_t code, const AParcel* in, AParcel* out) {
    int32_t value = 0;
    switch (code) {
        case kAdd: {
            const binder_status_t status = reads(&value)(in);
            std::lock_guard<std::mutex> lock(state().mutex);
            state().addThread = std::this_thread::get_id();
            return status == STATUS_OK ? writes(value + 1)(out) : status;
        }
        case kEchoFds:
            return echo<ndk::ScopedFileDescriptor>(in, out);
        case kEchoBytes:
            return echo<uint8_t>(in, out);
        case kBlock:
            return block(in);
        case kMostBlocked: {
            std::lock_guard<std::mutex> lock(state().mutex);
            return writes(state().mostBlocked)(out);
        }
        case kRecord: {
            const binder_status_t status = reads(&value)(in);
            std::lock_guard<std::mutex> lock(state().mutex);
            state().records.push_back(value);
            return status;
        }
        case kRecords: {
            std::lock_guard<std::mutex> lock(state().mutex);
            return writes(state().records)(out);
        }
        case kCountFds:
            return writes(countOpenDescriptors())(out);
        case kCaller:
            return writes(int32_t{AIBinder_getCallingPid()},
                          uint32_t{AIBinder_getCallingUid()})(out);
        case kPoolStarted:
            return writes(int32_t{ABinderProcess_isThreadPoolStarted()})(out);
        case kFail:
            reads (&value)(in);
            return value;
        default:
            return handleObjects(code, in, out);
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
    std::lock_guard<std::mutex> lock(state().mutex);
    return state().addThread;
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

std::vector<int32_t> recordsOf(const ndk::SpAIBinder& binder) {
    std::vector<int32_t> records;
    callPeer(binder, kRecords, nullptr, reads(&records));
    return records;
}

int32_t add(const ndk::SpAIBinder& binder, int32_t value, binder_status_t* status) {
    return askPeer(binder, kAdd, writes(value), status);
}

int32_t callThrough(const ndk::SpAIBinder& via, const ndk::SpAIBinder& target, int32_t value,
                    binder_status_t* status) {
    return askPeer(via, kCall, writes(target, value), status);
}

int32_t pingPong(const ndk::SpAIBinder& target, const ndk::SpAIBinder& back, int32_t depth,
                 binder_status_t* status) {
    return askPeer(target, kPingPong, writes(back, target, depth), status);
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
