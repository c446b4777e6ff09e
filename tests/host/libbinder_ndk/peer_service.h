// The object that tests call in other processes, and the calls they make.
#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_parcel_utils.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>
#include <vector>

// What a peer does on request. Values are int32 unless said otherwise.
enum PeerRequest : transaction_code_t {
    kAdd = FIRST_CALL_TRANSACTION,  // value -> value + 1
    kEcho,                          // bytes, fds -> the same
    kHold,                          // binder, which may be null: kept until the next kHold
    kGetHeld,                       // -> binder
    kCall,                          // binder, value -> what the binder's kAdd answers
    kNewObject,                     // -> binder of a new object of the peer
    kLiveObjects,                   // -> how many such objects are alive
    kBlock,                         // fd entered, fd go: writes to one, waits for the other
    kCount,                         // value -> the peer's count, which takes values one by one
    kFork,                          // makes a child that ends with the peer's standard input
    kFail,                          // status: returned as transport status
    kRefuse,                        // message -> the caller's pid as service-specific error
    kPeerRequestEnd,
};

// The class of these objects, and a new object of it (an owned reference).
const AIBinder_Class* PeerClass();
ndk::SpAIBinder NewPeerObject();

// How many objects of the class are alive in this process, and how often this thread ran kAdd.
int LivePeerObjects();
int AddsOnThisThread();

// Arguments and answers of a call, one after the other; binders may be null.
template <typename T>
binder_status_t WriteOne(AParcel* parcel, const T& value) {
    if constexpr (std::is_same_v<T, ndk::SpAIBinder>) {
        return AParcel_writeStrongBinder(parcel, value.get());
    } else {
        return ndk::AParcel_writeData(parcel, value);
    }
}
template <typename T>
binder_status_t ReadOne(const AParcel* parcel, T* value) {
    if constexpr (std::is_same_v<T, ndk::SpAIBinder>) {
        return ndk::AParcel_readNullableStrongBinder(parcel, value);
    } else {
        return ndk::AParcel_readData(parcel, value);
    }
}
template <typename... Values>
auto Writes(const Values&... values) {
    return [&](AParcel* parcel) {
        binder_status_t status = STATUS_OK;
        ((status = status == STATUS_OK ? WriteOne(parcel, values) : status), ...);
        return status;
    };
}
template <typename... Values>
auto Reads(Values*... values) {
    return [=](const AParcel* parcel) {
        binder_status_t status = STATUS_OK;
        ((status = status == STATUS_OK ? ReadOne(parcel, values) : status), ...);
        return status;
    };
}

// One call: the arguments that `write` adds, and the answer that `read` takes.
binder_status_t CallPeer(const ndk::SpAIBinder& binder, transaction_code_t code,
                         const std::function<binder_status_t(AParcel*)>& write = nullptr,
                         const std::function<binder_status_t(const AParcel*)>& read = nullptr,
                         binder_flags_t flags = 0);

// A call with one value as its answer; T() on failure.
template <typename T = int32_t>
T AskPeer(const ndk::SpAIBinder& binder, transaction_code_t code,
          const std::function<binder_status_t(AParcel*)>& write = nullptr) {
    T answer{};
    return CallPeer(binder, code, write, Reads(&answer)) == STATUS_OK ? answer : T();
}
inline int32_t Add(const ndk::SpAIBinder& binder, int32_t value) {
    return AskPeer(binder, kAdd, Writes(value));
}
inline binder_status_t Hold(const ndk::SpAIBinder& peer, const ndk::SpAIBinder& object,
                            binder_flags_t flags = 0) {
    return CallPeer(peer, kHold, Writes(object), nullptr, flags);
}
inline ndk::SpAIBinder GetBinder(const ndk::SpAIBinder& peer, transaction_code_t code) {
    return AskPeer<ndk::SpAIBinder>(peer, code);
}

struct Pipe {
    Pipe() {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0) abort();
        reading.set(ends[0]);
        writing.set(ends[1]);
    }
    ndk::ScopedFileDescriptor reading;
    ndk::ScopedFileDescriptor writing;
};
