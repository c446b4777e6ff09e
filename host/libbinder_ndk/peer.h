// Another process: the connection to it, the calls over it, and the references both hold.
#pragma once

#include "connection.h"
#include "objects.h"
#include "references.h"

namespace hostbinder {

class Peer final : public Connection {
  public:
    using Connection::Connection;

    // Calls the peer's object. `in` is borrowed until the reply is here; *out is owned by the
    // caller (empty for a oneway call). clazz, for the trace, may be null.
    binder_status_t Transact(uint64_t number, const AIBinder_Class* clazz, transaction_code_t code,
                             AParcel* in, AParcel** out, binder_flags_t flags);
    // The last reference to the proxy of one of the peer's objects is gone.
    void Forget(ProxyBinder* proxy);
    // Asks the peer for a reference to its object: false if it has none, or has gone.
    bool Acquire(uint64_t number);
    PeerReferences* References() { return &m_references; }

  private:
    struct IncomingCall;

    // Sends a message with the objects of a parcel.
    binder_status_t SendMessage(OutgoingFrame* frame, AParcel* parcel);
    // `out` is borrowed and not used if status is not OK.
    void SendReply(uint64_t id, binder_status_t status, AParcel* out);
    void AwaitReply(Waiter* waiter, transaction_code_t code, IncomingMessage* reply);
    // Gets the references to objects of third processes and tells the sender. Not on the reader's
    // thread.
    void ResolveReferences(IncomingMessage* message);

    base::Result<base::Done> HandleFrame(IncomingFrame* frame) override;
    void HandleEnd() override;
    base::Result<base::Done> Decode(IncomingFrame* frame, IncomingMessage* message);
    base::Result<base::Done> HandleCall(IncomingFrame* frame);
    base::Result<base::Done> HandleReply(IncomingFrame* frame);
    base::Result<base::Done> HandleRelease(const FrameHeader& header);
    void HandleAcquire(const FrameHeader& header);
    void HandleReferencesTaken(uint64_t id);
    // Whether the calls that wait are too many for this one to wait as well.
    bool IsFlooded(size_t cost);
    void Refuse(const FrameHeader& call);
    void Serve(IncomingCall* call);
    binder_status_t RunMethod(IncomingCall* call, AParcel* out);

    PeerReferences m_references;
    std::atomic<size_t> m_waitingBytes{0};  // of incoming calls until they have been served
    bool m_refusesCalls = false;            // the reader's
};

}  // namespace hostbinder
