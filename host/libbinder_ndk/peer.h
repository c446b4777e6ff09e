// Another process: the connection to it, the calls over it, and the references both hold.
#pragma once

#include "connection.h"
#include "objects.h"
#include "references.h"

namespace hostbinder {

// What a peer needs of this process among the others.
class Neighbourhood {
  public:
    virtual ~Neighbourhood() = default;
    // A reference to object `number` of process `owner`: owned, never null. If the process or the
    // object is gone, calls of the object fail with STATUS_DEAD_OBJECT.
    virtual AIBinder* Resolve(const std::string& owner, uint64_t number) = 0;
    // The peer's connection has ended.
    virtual void Forget(const Connection* peer) = 0;
};

class Peer final : public Connection, public ObjectOwner {
  public:
    // Takes ownership of the socket; `neighbours` lives as long as the process.
    Peer(int fd, std::string name, PeerCredentials credentials, Neighbourhood* neighbours)
        : Connection(fd, std::move(name), credentials), m_neighbours(neighbours) {}

    bool IsOpen() const override { return IsConnected(); }
    const std::string& Name() const override { return PeerName(); }
    binder_status_t Transact(uint64_t number, const AIBinder_Class* clazz, transaction_code_t code,
                             AParcel* in, AParcel** out, binder_flags_t flags) override;
    void Forget(ProxyBinder* proxy) override;

    // Asks the peer for a reference to its object: false if it has none, or has gone.
    bool Acquire(uint64_t number);
    PeerReferences* References() { return &m_references; }  // used through the table only

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

    // Keeps references until the peer has taken them. 0 if the connection has ended.
    uint64_t Hold(std::vector<AIBinder*> references);
    std::vector<AIBinder*> TakeHeld(uint64_t id);

    Neighbourhood* const m_neighbours;
    PeerReferences m_references;
    std::atomic<size_t> m_waitingBytes{0};  // of incoming calls until they have been served
    bool m_refusesCalls = false;            // the reader's

    std::mutex m_heldMutex;  // guards what follows
    bool m_ended = false;
    std::unordered_map<uint64_t, std::vector<AIBinder*>> m_heldForPeer;
};

}  // namespace hostbinder
