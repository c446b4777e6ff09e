// The one connection between this process and another: calls, replies and the references both hold.
#pragma once

#include <android/binder_ibinder.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "frame_sender.h"
#include "message.h"
#include "object_table.h"
#include "socket_address.h"
#include "waiter.h"

namespace hostbinder {

class Connection : public std::enable_shared_from_this<Connection> {
  public:
    // Takes ownership of the socket. peerName is the peer's socket name.
    Connection(int fd, std::string peerName, PeerCredentials peer);
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // Reads until the connection ends, then cleans up. On a thread of its own.
    void runReader();
    bool isOpen() const { return mSender->isOpen(); }
    // Makes the reader end the connection.
    void shutDown() { mSender->shutDown(); }

    // Calls the peer's object. `in` is borrowed until the reply is here; *out is owned by the
    // caller (empty for a oneway call). clazz, for the trace, may be null.
    binder_status_t transact(uint64_t number, const AIBinder_Class* clazz, transaction_code_t code,
                             AParcel* in, AParcel** out, binder_flags_t flags);
    // Asks the peer for a reference to its object: false if it has none, or has gone.
    bool acquire(uint64_t number);
    // Gives back references to the peer's object.
    void giveBack(uint64_t number, uint64_t count);

    // Answers call `id`. `out` is borrowed and not used if status is not OK.
    void sendReply(uint64_t id, binder_status_t status, AParcel* out);
    // The references in the peer's message with this id have been taken.
    void sendReferencesTaken(uint64_t id);

    const std::string& peerName() const { return mPeerName; }
    const PeerCredentials& peer() const { return mPeer; }
    // "pid/program", for logs and the trace.
    const std::string& peerLabel() const { return mPeerLabel; }
    PeerObjects* objects() { return &mObjects; }  // to be used through the object table only

  private:
    // Sends a message with the objects of a parcel.
    binder_status_t sendMessage(OutgoingFrame* frame, AParcel* parcel);

    bool handleFrame(IncomingFrame* frame, std::string* reason);
    bool handleCall(IncomingFrame* frame, std::string* reason);
    void refuseCall(const IncomingMessage& message);
    bool handleReply(IncomingFrame* frame, std::string* reason);
    void handleAcquire(const FrameHeader& header);
    bool handleRelease(const FrameHeader& header, std::string* reason);
    void handleReferencesTaken(uint64_t id);
    void finish();

    binder_status_t expectReply(uint64_t id, const std::shared_ptr<Waiter>& waiter);
    std::shared_ptr<Waiter> takeWaiter(uint64_t id);
    void awaitReply(Waiter* waiter, transaction_code_t code, IncomingMessage* reply);
    // False, and the connection ends, if there is no answer in time.
    bool awaitInTime(Waiter* waiter, int milliseconds, const char* question,
                     IncomingMessage* reply);
    // Keeps references until the peer has taken them. 0 if the connection has ended, or the peer
    // has not taken so many that it never will.
    uint64_t hold(const std::vector<AIBinder*>& references);
    std::vector<AIBinder*> takeHeld(uint64_t id);

    const int mFd;  // the sender's
    const std::string mPeerName;
    const PeerCredentials mPeer;
    const std::string mPeerLabel;
    const std::shared_ptr<FrameSender> mSender;
    std::atomic<uint64_t> mLastId{0};
    PeerObjects mObjects;

    std::mutex mMutex;  // guards what follows
    bool mEnded = false;
    std::unordered_map<uint64_t, std::shared_ptr<Waiter>> mWaiters;
    std::unordered_map<uint64_t, std::vector<AIBinder*>> mHeld;
};

}  // namespace hostbinder
