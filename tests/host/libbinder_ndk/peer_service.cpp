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

binder_status_t echoFds(const AParcel* in, AParcel* out) {
    std::vector<ndk::ScopedFileDescriptor> fds;
    binder_status_t status = ndk::AParcel_readVector(in, &fds);
    return status == STATUS_OK ? ndk::AParcel_writeVector(out, fds) : status;
}

binder_status_t echoBytes(const AParcel* in, AParcel* out) {
    std::vector<uint8_t> bytes;
    binder_status_t status = ndk::AParcel_readVector(in, &bytes);
    return status == STATUS_OK ? ndk::AParcel_writeVector(out, bytes) : status;
}

binder_status_t holdBinder(const AParcel* in) {
    ndk::SpAIBinder binder;
    binder_status_t status = ndk::AParcel_readNullableStrongBinder(in, &binder);
    std::lock_guard<std::mutex> lock(state().mutex);
    std::swap(state().held, binder);
    return status;
}

binder_status_t callBinder(const AParcel* in, AParcel* out) {
    ndk::SpAIBinder target;
    int32_t value = 0;
    binder_status_t status = ndk::AParcel_readRequiredStrongBinder(in, &target);
    if (status == STATUS_OK) status = ndk::AParcel_readData(in, &value);
    if (status != STATUS_OK) return status;
    const int32_t answer = add(target, value, &status);
    return status == STATUS_OK ? ndk::AParcel_writeData(out, answer) : status;
}

binder_status_t playPingPong(const AParcel* in, AParcel* out) {
    ndk::SpAIBinder other;
    ndk::SpAIBinder self;
    int32_t depth = 0;
    binder_status_t status = ndk::AParcel_readRequiredStrongBinder(in, &other);
    if (status == STATUS_OK) status = ndk::AParcel_readRequiredStrongBinder(in, &self);
    if (status == STATUS_OK) status = ndk::AParcel_readData(in, &depth);
    int32_t answer = 0;
    if (status == STATUS_OK && depth > 1) answer = pingPong(other, self, depth - 1, &status);
    return status == STATUS_OK ? ndk::AParcel_writeData(out, answer + 1) : status;
}

binder_status_t block(const AParcel* in) {
    ndk::ScopedFileDescriptor entered;
    ndk::ScopedFileDescriptor go;
    binder_status_t status = ndk::AParcel_readData(in, &entered);
    if (status == STATUS_OK) status = ndk::AParcel_readData(in, &go);
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
            return ndk::AParcel_writeNullableStrongBinder(out, state().held);
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
            return ndk::AParcel_writeRequiredStrongBinder(out, newPeerObject());
        case kLiveObjects:
            return ndk::AParcel_writeData(out, livePeerObjects());
        default:
            return STATUS_UNKNOWN_TRANSACTION;
    }
}

binder_status_t handle(AIBinder*, transaction_code_t code, const AParcel* in, AParcel* out) {
    int32_t value = 0;
    switch (code) {
        case kAdd: {
            binder_status_t status = ndk::AParcel_readData(in, &value);
            std::lock_guard<std::mutex> lock(state().mutex);
            state().addThread = std::this_thread::get_id();
            return status == STATUS_OK ? ndk::AParcel_writeData(out, value + 1) : status;
        }
        case kEchoFds:
            return echoFds(in, out);
        case kEchoBytes:
            return echoBytes(in, out);
        case kBlock:
            return block(in);
        case kMostBlocked: {
            std::lock_guard<std::mutex> lock(state().mutex);
            return ndk::AParcel_writeData(out, static_cast<int32_t>(state().mostBlocked));
        }
        case kRecord: {
            binder_status_t status = ndk::AParcel_readData(in, &value);
            std::lock_guard<std::mutex> lock(state().mutex);
            state().records.push_back(value);
            return status;
        }
        case kRecords: {
            std::lock_guard<std::mutex> lock(state().mutex);
            return ndk::AParcel_writeVector(out, state().records);
        }
        case kCountFds:
            return ndk::AParcel_writeData(out, countOpenDescriptors());
        case kCaller:
            ndk::AParcel_writeData(out, static_cast<int32_t>(AIBinder_getCallingPid()));
            return ndk::AParcel_writeData(out, static_cast<int32_t>(AIBinder_getCallingUid()));
        case kPoolStarted:
            return ndk::AParcel_writeData(out, int32_t{ABinderProcess_isThreadPoolStarted()});
        case kFail:
            ndk::AParcel_readData(in, &value);
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
    binder_status_t result = callPeer(binder, code, write, [&](const AParcel* out) {
        return ndk::AParcel_readData(out, &answer);
    });
    if (status != nullptr) *status = result;
    return answer;
}

std::vector<int32_t> recordsOf(const ndk::SpAIBinder& binder) {
    std::vector<int32_t> records;
    callPeer(binder, kRecords, nullptr,
             [&](const AParcel* out) { return ndk::AParcel_readVector(out, &records); });
    return records;
}

int32_t add(const ndk::SpAIBinder& binder, int32_t value, binder_status_t* status) {
    return askPeer(
            binder, kAdd, [value](AParcel* in) { return ndk::AParcel_writeData(in, value); },
            status);
}

int32_t callThrough(const ndk::SpAIBinder& via, const ndk::SpAIBinder& target, int32_t value,
                    binder_status_t* status) {
    return askPeer(
            via, kCall,
            [&](AParcel* in) {
                AParcel_writeStrongBinder(in, target.get());
                return ndk::AParcel_writeData(in, value);
            },
            status);
}

int32_t pingPong(const ndk::SpAIBinder& target, const ndk::SpAIBinder& back, int32_t depth,
                 binder_status_t* status) {
    return askPeer(
            target, kPingPong,
            [&](AParcel* in) {
                AParcel_writeStrongBinder(in, back.get());
                AParcel_writeStrongBinder(in, target.get());
                return ndk::AParcel_writeData(in, depth);
            },
            status);
}

binder_status_t hold(const ndk::SpAIBinder& peer, const ndk::SpAIBinder& object) {
    return callPeer(peer, kHold,
                    [&](AParcel* in) { return AParcel_writeStrongBinder(in, object.get()); });
}

ndk::SpAIBinder getBinder(const ndk::SpAIBinder& peer, transaction_code_t code) {
    ndk::SpAIBinder binder;
    callPeer(peer, code, nullptr, [&](const AParcel* out) {
        return ndk::AParcel_readNullableStrongBinder(out, &binder);
    });
    return binder;
}
