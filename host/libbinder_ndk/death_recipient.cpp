// AIBinder_DeathRecipient, and linking one to an object.
#include "death_recipient.h"

#include <algorithm>

#include "ibinder.h"
#include "proxy_binder.h"

using hostbinder::DeathLink;

AIBinder_DeathRecipient::~AIBinder_DeathRecipient() {
    for (const auto& link : mLinks) link->unlink();
}

void AIBinder_DeathRecipient::setOnUnlinked(AIBinder_DeathRecipient_onBinderUnlinked onUnlinked) {
    std::lock_guard<std::mutex> lock(mMutex);
    mOnUnlinked = onUnlinked;
}

std::shared_ptr<DeathLink> AIBinder_DeathRecipient::newLink(void* cookie) {
    std::lock_guard<std::mutex> lock(mMutex);
    mLinks.erase(std::remove_if(mLinks.begin(), mLinks.end(),
                                [](const auto& link) { return !link->isActive(); }),
                 mLinks.end());
    mLinks.push_back(std::make_shared<DeathLink>(mOnDied, mOnUnlinked, cookie));
    return mLinks.back();
}

bool AIBinder_DeathRecipient::owns(const std::shared_ptr<DeathLink>& link) {
    std::lock_guard<std::mutex> lock(mMutex);
    return std::find(mLinks.begin(), mLinks.end(), link) != mLinks.end();
}

AIBinder_DeathRecipient* AIBinder_DeathRecipient_new(
        AIBinder_DeathRecipient_onBinderDied onBinderDied) {
    return onBinderDied == nullptr ? nullptr : new AIBinder_DeathRecipient(onBinderDied);
}

void AIBinder_DeathRecipient_setOnUnlinked(AIBinder_DeathRecipient* recipient,
                                           AIBinder_DeathRecipient_onBinderUnlinked onUnlinked) {
    if (recipient != nullptr) recipient->setOnUnlinked(onUnlinked);
}

void AIBinder_DeathRecipient_delete(AIBinder_DeathRecipient* recipient) {
    delete recipient;
}

binder_status_t AIBinder_linkToDeath(AIBinder* binder, AIBinder_DeathRecipient* recipient,
                                     void* cookie) {
    if (binder == nullptr || recipient == nullptr) return STATUS_UNEXPECTED_NULL;
    hostbinder::ProxyBinder* proxy = binder->asProxy();
    return proxy == nullptr ? STATUS_INVALID_OPERATION : proxy->linkToDeath(recipient, cookie);
}

binder_status_t AIBinder_unlinkToDeath(AIBinder* binder, AIBinder_DeathRecipient* recipient,
                                       void* cookie) {
    if (binder == nullptr || recipient == nullptr) return STATUS_UNEXPECTED_NULL;
    hostbinder::ProxyBinder* proxy = binder->asProxy();
    return proxy == nullptr ? STATUS_INVALID_OPERATION : proxy->unlinkToDeath(recipient, cookie);
}
