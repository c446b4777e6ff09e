// Remote objects: calls over the connection to their process, classes and death.
#include "proxy_binder.h"

#include <algorithm>
#include <utility>

#include "connection.h"
#include "object_table.h"
#include "parcel.h"
#include "thread_pool.h"

namespace hostbinder {

namespace {

// Tells recipients of a death, on a pool thread.
class Obituary final : public Work {
  public:
    explicit Obituary(std::vector<std::shared_ptr<DeathLink>> links) : mLinks(std::move(links)) {}
    void run() override {
        for (const auto& link : mLinks) link->die();
    }

  private:
    std::vector<std::shared_ptr<DeathLink>> mLinks;
};

}  // namespace

ProxyBinder::ProxyBinder(std::shared_ptr<Connection> connection, uint64_t number)
    : AIBinder(nullptr),
      mConnection(std::move(connection)),
      mNumber(number),
      mAlive(mConnection != nullptr) {}

bool ProxyBinder::isAlive() const {
    return mAlive && mConnection->isOpen();
}

bool ProxyBinder::associateClass(const AIBinder_Class* wanted) {
    if (const AIBinder_Class* current = clazz()) return current->descriptor == wanted->descriptor;
    std::string descriptor;
    if (readDescriptor(&descriptor) != STATUS_OK || descriptor != wanted->descriptor) return false;
    const AIBinder_Class* none = nullptr;
    mClass.compare_exchange_strong(none, wanted);
    return true;  // another thread's class, if any, passed the same comparison
}

binder_status_t ProxyBinder::readDescriptor(std::string* descriptor) {
    AParcel in;
    AParcel* out = nullptr;
    binder_status_t status = transact(kDescriptorCode, &in, &out, 0);
    if (status != STATUS_OK) return status;
    std::unique_ptr<AParcel> reply(out);
    return readString(reply.get(), descriptor);
}

binder_status_t ProxyBinder::linkToDeath(AIBinder_DeathRecipient* recipient, void* cookie) {
    std::lock_guard<std::mutex> lock(mMutex);
    if (!isAlive()) return STATUS_DEAD_OBJECT;
    mLinks.erase(std::remove_if(mLinks.begin(), mLinks.end(),
                                [](const auto& link) { return !link->isActive(); }),
                 mLinks.end());
    mLinks.push_back(recipient->newLink(cookie));
    return STATUS_OK;
}

binder_status_t ProxyBinder::unlinkToDeath(AIBinder_DeathRecipient* recipient, void* cookie) {
    std::shared_ptr<DeathLink> link;
    {
        std::lock_guard<std::mutex> lock(mMutex);
        if (!mAlive) return STATUS_DEAD_OBJECT;
        auto found = std::find_if(mLinks.begin(), mLinks.end(), [&](const auto& candidate) {
            return candidate->cookie() == cookie && candidate->isActive() &&
                   recipient->owns(candidate);
        });
        if (found == mLinks.end()) return STATUS_NAME_NOT_FOUND;
        link = *found;
        mLinks.erase(found);
    }
    return link->unlink() ? STATUS_OK : STATUS_NAME_NOT_FOUND;
}

void ProxyBinder::markDead() {
    std::vector<std::shared_ptr<DeathLink>> links;
    {
        std::lock_guard<std::mutex> lock(mMutex);
        mAlive = false;
        links.swap(mLinks);
    }
    if (!links.empty()) ThreadPool::instance().submit(std::make_unique<Obituary>(std::move(links)));
}

binder_status_t ProxyBinder::transact(transaction_code_t code, AParcel* in, AParcel** out,
                                      binder_flags_t flags) {
    if (!isAlive()) return STATUS_DEAD_OBJECT;
    return mConnection->transact(mNumber, clazz(), code, in, out, flags);
}

void ProxyBinder::onLastStrongReference() {
    for (const auto& link : mLinks) link->unlink();
    if (mConnection == nullptr) return;
    const uint64_t references = ObjectTable::instance().forgetProxy(mConnection->objects(), this);
    if (references > 0 && isAlive()) mConnection->giveBack(mNumber, references);
}

}  // namespace hostbinder
