// Calls of local and of remote objects, and links to death.
#include "objects.h"

#include <utility>

#include "log.h"
#include "parcel.h"
#include "peer.h"

namespace hostbinder {

binder_status_t LocalBinder::Transact(transaction_code_t code, AParcel* in, AParcel** out,
                                      binder_flags_t /*flags*/) {
    in->SetPosition(0);
    auto reply = std::make_unique<AParcel>();
    binder_status_t status = Handle(code, in, reply.get());
    if (status != STATUS_OK) return status;
    reply->SetPosition(0);
    *out = reply.release();
    return STATUS_OK;
}

bool LocalBinder::AssociateClass(const AIBinder_Class* wanted) {
    if (wanted == Class()) return true;
    if (wanted->descriptor == Class()->descriptor) {
        BINDER_LOGE("'%s' is defined twice in this process; the object has the other class",
                    wanted->descriptor.c_str());
    }
    return false;
}

binder_status_t LocalBinder::Handle(transaction_code_t code, const AParcel* in, AParcel* out) {
    if (code == kPingCode) return STATUS_OK;
    if (code == kDescriptorCode) return WriteString(out, Class()->descriptor);
    if (code < FIRST_CALL_TRANSACTION || code > LAST_CALL_TRANSACTION) {
        return STATUS_UNKNOWN_TRANSACTION;
    }
    binder_status_t status = CheckInterfaceHeader(in, Class()->descriptor);
    if (status != STATUS_OK) {
        BINDER_LOGW("call %u to '%s' has another interface's header", code,
                    Class()->descriptor.c_str());
        return status;
    }
    return Class()->onTransact(this, code, in, out);
}

void LocalBinder::OnLastStrongReference() {
    ForgetExported(this);
    Class()->onDestroy(m_userData);
}

bool LocalBinder::BeginOneway(Work* call) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_onewayRunning) {
        m_onewayRunning = true;
        return true;
    }
    m_onewayCalls.push_back(std::move(*call));
    return false;
}

Work LocalBinder::NextOneway() {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_onewayCalls.empty()) {
        m_onewayRunning = false;
        return nullptr;
    }
    Work next = std::move(m_onewayCalls.front());
    m_onewayCalls.pop_front();
    return next;
}

ProxyBinder::ProxyBinder(std::shared_ptr<Peer> owner, uint64_t number)
    : AIBinder(nullptr), m_owner(std::move(owner)), m_number(number), m_alive(m_owner != nullptr) {}

bool ProxyBinder::IsAlive() const {
    return m_alive && m_owner->IsConnected();
}

binder_status_t ProxyBinder::Transact(transaction_code_t code, AParcel* in, AParcel** out,
                                      binder_flags_t flags) {
    if (!IsAlive()) return STATUS_DEAD_OBJECT;
    return m_owner->Transact(m_number, Class(), code, in, out, flags);
}

bool ProxyBinder::AssociateClass(const AIBinder_Class* wanted) {
    if (const AIBinder_Class* current = Class()) return current->descriptor == wanted->descriptor;
    std::string descriptor;
    if (ReadDescriptor(&descriptor) != STATUS_OK || descriptor != wanted->descriptor) return false;
    const AIBinder_Class* none = nullptr;
    m_class.compare_exchange_strong(none, wanted);
    return true;  // another thread's class, if any, passed the same comparison
}

binder_status_t ProxyBinder::ReadDescriptor(std::string* descriptor) {
    AParcel in;
    AParcel* out = nullptr;
    binder_status_t status = Transact(kDescriptorCode, &in, &out, 0);
    if (status != STATUS_OK) return status;
    std::unique_ptr<AParcel> reply(out);
    return ReadString(reply.get(), descriptor);
}

binder_status_t ProxyBinder::LinkToDeath(AIBinder_DeathRecipient* recipient, void* cookie) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!IsAlive()) return STATUS_DEAD_OBJECT;
    DropEnded(&m_links);
    m_links.push_back(recipient->NewLink(cookie));
    return STATUS_OK;
}

binder_status_t ProxyBinder::UnlinkToDeath(AIBinder_DeathRecipient* recipient, void* cookie) {
    std::shared_ptr<DeathLink> link;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_alive) return STATUS_DEAD_OBJECT;
        auto found = std::find_if(m_links.begin(), m_links.end(), [&](const auto& candidate) {
            return candidate->IsFor(recipient, cookie);
        });
        if (found == m_links.end()) return STATUS_NAME_NOT_FOUND;
        link = *found;
        m_links.erase(found);
    }
    return link->Unlink() ? STATUS_OK : STATUS_NAME_NOT_FOUND;
}

DeathLinks ProxyBinder::MarkDead() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_alive = false;
    return std::exchange(m_links, {});
}

void ProxyBinder::OnLastStrongReference() {
    for (const auto& link : m_links) link->Unlink();
    if (m_owner != nullptr) m_owner->Forget(this);
}

}  // namespace hostbinder
