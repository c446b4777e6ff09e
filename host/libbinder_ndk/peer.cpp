// Calls to and from another process.
#include "peer.h"

#include <utility>

#include "endpoint.h"
#include "log.h"
#include "status_names.h"
#include "trace.h"

namespace hostbinder {

namespace {

// How deeply calls may nest on one thread: a peer that calls back without end would overflow its
// stack.
constexpr int kMaxNesting = 64;
// Of one peer's calls until they have been served; any message fits alone. A call and a descriptor
// count for more than their bytes, because they cost memory and a place in a small table.
constexpr size_t kMaxWaitingBytes = 4 * 1024 * 1024;
constexpr size_t kCallCost = 512;
constexpr size_t kDescriptorCost = 8192;
static_assert(kCallCost + kMaxParcelBytes + kMaxDescriptors * kDescriptorCost <= kMaxWaitingBytes);

bool IsOneway(binder_flags_t flags) {
    return (flags & FLAG_ONEWAY) != 0;
}

FrameHeader ControlHeader(FrameKind kind, uint64_t id, uint64_t target = 0) {
    FrameHeader header{};
    header.kind = kind;
    header.id = id;
    header.target = target;
    return header;
}

FrameHeader ReplyHeader(uint64_t id, binder_status_t status) {
    FrameHeader header = ControlHeader(FrameKind::kReply, id);
    header.status = status;
    return header;
}

}  // namespace

// Waits for a thread or runs.
struct Peer::IncomingCall {
    IncomingCall(std::shared_ptr<Peer> from, LocalBinder* called)
        : peer(std::move(from)), target(called) {}
    ~IncomingCall() {
        peer->m_waitingBytes -= cost;
        target->DecStrong();
    }
    IncomingCall(const IncomingCall&) = delete;
    IncomingCall& operator=(const IncomingCall&) = delete;

    const std::shared_ptr<Peer> peer;
    LocalBinder* const target;  // a strong reference
    IncomingMessage message;
    size_t cost = 0;
};

binder_status_t Peer::SendMessage(OutgoingFrame* frame, AParcel* parcel) {
    const binder_status_t status = EncodeMessage(parcel, this, frame);
    return status == STATUS_OK ? Send(frame) : status;
}

binder_status_t Peer::Transact(uint64_t number, const AIBinder_Class* clazz,
                               transaction_code_t code, AParcel* in, AParcel** out,
                               binder_flags_t flags) {
    OutgoingFrame frame;
    frame.header = ControlHeader(FrameKind::kCall, NextId(), number);
    frame.header.code = code;
    frame.header.flags = flags;
    TracedCall trace(TracedCall::Direction::kOut, PeerLabel(), clazz, code, flags, *in);

    IncomingMessage reply;
    if (IsOneway(flags)) {
        reply.status = SendMessage(&frame, in);
    } else {
        const uint64_t outer = TheCallContext().chain;
        frame.header.chain = outer != 0 ? outer : NewChain();
        auto waiter = std::make_shared<Waiter>();
        EnterChain(frame.header.chain, waiter);
        reply.status = ExpectReply(frame.header.id, waiter);
        if (reply.status == STATUS_OK) reply.status = SendMessage(&frame, in);
        if (reply.status == STATUS_OK) {
            AwaitReply(waiter.get(), code, &reply);
        } else {
            TakeWaiter(frame.header.id);
        }
        ResolveReferences(&reply);
        LeaveChain(frame.header.chain, waiter.get());
    }
    trace.End(reply.status, *reply.parcel);
    if (reply.status != STATUS_OK) return PruneStatus(reply.status);
    *out = reply.parcel.release();
    return STATUS_OK;
}

void Peer::AwaitReply(Waiter* waiter, transaction_code_t code, IncomingMessage* reply) {
    // A thread that serves one peer does not wait for ever for what another's library answers
    // itself.
    const bool bounded =
            (code == kPingCode || code == kDescriptorCode) && TheCallContext().handling;
    if (bounded && AwaitAnswer(waiter, "what its object is", reply)) return;
    waiter->Wait(std::nullopt, reply);  // the end of the connection answers, too
}

bool Peer::Acquire(uint64_t number) {
    const FrameHeader header = ControlHeader(FrameKind::kAcquire, NextId(), number);
    auto waiter = std::make_shared<Waiter>();
    if (ExpectReply(header.id, waiter) != STATUS_OK) return false;
    SendControl(header);
    IncomingMessage reply;
    return AwaitAnswer(waiter.get(), "whether it has an object", &reply) &&
           reply.status == STATUS_OK;
}

void Peer::Forget(ProxyBinder* proxy) {
    const uint64_t references = m_references.ForgetProxy(proxy);
    if (references == 0 || !IsConnected()) return;
    SendControl(ControlHeader(FrameKind::kRelease, references, proxy->Number()));
}

void Peer::ResolveReferences(IncomingMessage* message) {
    for (const auto& [index, reference] : message->unresolved) {
        if (message->status != STATUS_OK) break;
        message->parcel->Objects()[index].binder =
                Endpoint::Instance().Resolve(reference.name, reference.number);
    }
    message->unresolved.clear();
    const uint64_t id = message->header.referencesId;
    if (id != 0) SendControl(ControlHeader(FrameKind::kReferencesTaken, id));
}

base::Result<base::Done> Peer::HandleFrame(IncomingFrame* frame) {
    const FrameHeader& header = frame->header;
    switch (header.kind) {
        case FrameKind::kCall:
            return HandleCall(frame);
        case FrameKind::kReply:
            return HandleReply(frame);
        case FrameKind::kAcquire:
            HandleAcquire(header);
            return base::Done{};
        case FrameKind::kRelease:
            return HandleRelease(header);
        case FrameKind::kReferencesTaken:
            HandleReferencesTaken(header.id);
            return base::Done{};
        case FrameKind::kHello:
        case FrameKind::kHelloReply:
            break;
    }
    return base::Failure{"greeting after the beginning"};
}

base::Result<base::Done> Peer::Decode(IncomingFrame* frame, IncomingMessage* message) {
    const auto self = std::static_pointer_cast<Peer>(shared_from_this());
    base::Result<base::Done> decoded = DecodeMessage(frame, self, message);
    // Before proxies of the message go, which would send releases on this thread.
    if (!decoded.Ok()) ShutDown();
    if (frame->descriptorsLost) {
        BINDER_LOGE("message from %s lost its descriptors: this process has too many open",
                    PeerLabel().c_str());
        message->status = STATUS_FAILED_TRANSACTION;
    }
    return decoded;
}

base::Result<base::Done> Peer::HandleCall(IncomingFrame* frame) {
    const FrameHeader header = frame->header;
    LocalBinder* target = m_references.FindHeld(header.target);
    if (target == nullptr) {
        return base::Failure{"call to unknown object " + std::to_string(header.target)};
    }
    auto call = std::make_shared<IncomingCall>(std::static_pointer_cast<Peer>(shared_from_this()),
                                               target);
    base::Result<base::Done> decoded = Decode(frame, &call->message);
    if (!decoded.Ok()) return decoded;
    call->cost = kCallCost + header.dataSize + header.descriptorCount * kDescriptorCost;
    if (IsFlooded(call->cost)) {
        if (m_waitingBytes > 2 * kMaxWaitingBytes) {
            return base::Failure{"it sends ever more calls though they are refused"};
        }
        // On another thread, because it sends: also releases of the call's objects.
        Courier::Frames().Post([call]() { call->peer->Refuse(call->message.header); });
        return base::Done{};
    }
    Work work = [call]() { call->peer->Serve(call.get()); };
    call = nullptr;
    if (!IsOneway(header.flags)) {
        Dispatch(header.chain, std::move(work));
    } else if (target->BeginOneway(&work)) {
        ThreadPool::Instance().Submit(std::move(work));
    }
    return base::Done{};
}

void Peer::Refuse(const FrameHeader& call) {
    if (call.referencesId != 0) {
        SendControl(ControlHeader(FrameKind::kReferencesTaken, call.referencesId));
    }
    if (!IsOneway(call.flags)) SendControl(ReplyHeader(call.id, STATUS_FAILED_TRANSACTION));
}

bool Peer::IsFlooded(size_t cost) {
    const bool flooded = m_waitingBytes.fetch_add(cost) + cost > kMaxWaitingBytes;
    if (flooded && !m_refusesCalls) {
        BINDER_LOGE("%s has too many calls waiting here: more are refused until some are served",
                    PeerLabel().c_str());
    }
    m_refusesCalls = flooded;
    return flooded;
}

base::Result<base::Done> Peer::HandleReply(IncomingFrame* frame) {
    std::shared_ptr<Waiter> waiter = TakeWaiter(frame->header.id);
    if (waiter == nullptr) return base::Failure{"reply to no call"};
    IncomingMessage reply;
    base::Result<base::Done> decoded = Decode(frame, &reply);
    if (!decoded.Ok()) {
        reply = IncomingMessage();
        reply.status = STATUS_DEAD_OBJECT;
    }
    waiter->Deliver(std::move(reply));
    return decoded;
}

void Peer::HandleAcquire(const FrameHeader& header) {
    binder_status_t status = STATUS_NAME_NOT_FOUND;
    if (LocalBinder* const found = FindExported(header.target)) {
        uint64_t number = 0;
        status = m_references.Export(found, &number);
        found->DecStrong();  // not the last one: the peer has one now
    }
    Courier::Frames().Post([self = shared_from_this(), this, id = header.id, status]() {
        SendControl(ReplyHeader(id, status));
    });
}

base::Result<base::Done> Peer::HandleRelease(const FrameHeader& header) {
    LocalBinder* dropped = nullptr;
    if (!m_references.GiveBack(header.target, header.id, &dropped)) {
        return base::Failure{"release of references to object " + std::to_string(header.target) +
                             " that it does not hold"};
    }
    if (dropped != nullptr) Courier::Releases().Post([dropped]() { dropped->DecStrong(); });
    return base::Done{};
}

void Peer::HandleReferencesTaken(uint64_t id) {
    Courier::Releases().Post([taken = m_references.TakeKept(id)]() {
        for (AIBinder* binder : taken) binder->DecStrong();
    });
}

void Peer::Serve(IncomingCall* call) {
    IncomingMessage& message = call->message;
    const FrameHeader header = message.header;
    TracedCall trace(TracedCall::Direction::kIn, PeerLabel(), call->target->Class(), header.code,
                     header.flags, *message.parcel);
    AParcel out;
    const binder_status_t status = RunMethod(call, &out);
    // Before the caller hears: what came with its request is gone when its call returns.
    message.parcel.reset();
    m_waitingBytes -= std::exchange(call->cost, 0);
    trace.End(status, out);
    if (!IsOneway(header.flags)) {
        SendReply(header.id, status, &out);
    } else if (Work next = call->target->NextOneway()) {
        ThreadPool::Instance().Submit(std::move(next));
    }
}

binder_status_t Peer::RunMethod(IncomingCall* call, AParcel* out) {
    IncomingMessage& message = call->message;
    const uint64_t chain = IsOneway(message.header.flags) ? 0 : message.header.chain;
    const CallContext outer = TheCallContext();
    TheCallContext() = {true, Credentials().uid, Credentials().pid, chain, outer.nesting + 1};
    ResolveReferences(&message);
    binder_status_t status = message.status;
    if (outer.nesting == kMaxNesting) {
        BINDER_LOGE("call from %s refused: it is nested in %d others", PeerLabel().c_str(),
                    kMaxNesting);
        status = STATUS_FAILED_TRANSACTION;
    }
    if (status == STATUS_OK) {
        status = call->target->Handle(message.header.code, message.parcel.get(), out);
    }
    TheCallContext() = outer;
    return status;
}

void Peer::SendReply(uint64_t id, binder_status_t status, AParcel* out) {
    if (status == STATUS_OK) {
        OutgoingFrame frame;
        frame.header = ReplyHeader(id, STATUS_OK);
        status = SendMessage(&frame, out);
        if (status == STATUS_OK || status == STATUS_DEAD_OBJECT) return;
    }
    SendControl(ReplyHeader(id, PruneStatus(status)));
}

void Peer::HandleEnd() {
    Endpoint::Instance().Forget(this);
    std::vector<AIBinder*> dropped;
    std::vector<ProxyBinder*> orphans;
    m_references.Close(&dropped, &orphans);
    for (ProxyBinder* proxy : orphans) {
        DeathLinks links = proxy->MarkDead();
        if (links.empty()) continue;
        ThreadPool::Instance().Submit([links]() {
            for (const auto& link : links) link->Die();
        });
    }
    FailWaiters();
    for (AIBinder* binder : dropped) binder->DecStrong();
    for (ProxyBinder* proxy : orphans) proxy->DecStrong();
}

}  // namespace hostbinder
