// AIBinder: reference counts and the functions that are the same for local and remote objects.
#include "ibinder.h"

#include <android/binder_ibinder_platform.h>

#include <functional>

#include "local_binder.h"
#include "log.h"

void AIBinder::incStrong() {
    mStrong.fetch_add(1, std::memory_order_relaxed);
}

void AIBinder::decStrong() {
    if (mStrong.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    onLastStrongReference();
    decWeak();
}

bool AIBinder::tryIncStrong() {
    int32_t count = mStrong.load(std::memory_order_relaxed);
    while (count > 0) {
        if (mStrong.compare_exchange_weak(count, count + 1, std::memory_order_acq_rel)) return true;
    }
    return false;
}

void AIBinder::incWeak() {
    mWeak.fetch_add(1, std::memory_order_relaxed);
}

void AIBinder::decWeak() {
    if (mWeak.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
}

struct AIBinder_Weak {
    AIBinder* binder;  // a weak reference, or null
};

AIBinder_Weak* AIBinder_Weak_new(AIBinder* binder) {
    if (binder == nullptr) return nullptr;
    binder->incWeak();
    return new AIBinder_Weak{binder};
}

void AIBinder_Weak_delete(AIBinder_Weak* weak) {
    if (weak == nullptr) return;
    weak->binder->decWeak();
    delete weak;
}

AIBinder* AIBinder_Weak_promote(AIBinder_Weak* weak) {
    return weak != nullptr && weak->binder->tryIncStrong() ? weak->binder : nullptr;
}

AIBinder_Weak* AIBinder_Weak_clone(const AIBinder_Weak* weak) {
    return weak == nullptr ? nullptr : AIBinder_Weak_new(weak->binder);
}

bool AIBinder_lt(const AIBinder* lhs, const AIBinder* rhs) {
    return std::less<const AIBinder*>()(lhs, rhs);
}

bool AIBinder_Weak_lt(const AIBinder_Weak* lhs, const AIBinder_Weak* rhs) {
    return AIBinder_lt(lhs == nullptr ? nullptr : lhs->binder,
                       rhs == nullptr ? nullptr : rhs->binder);
}

AIBinder* AIBinder_new(const AIBinder_Class* clazz, void* args) {
    if (clazz == nullptr) {
        BINDER_LOGE("AIBinder_new: no class given");
        return nullptr;
    }
    return new hostbinder::LocalBinder(clazz, clazz->onCreate(args));
}

bool AIBinder_isRemote(const AIBinder* binder) {
    return binder != nullptr && const_cast<AIBinder*>(binder)->asLocal() == nullptr;
}

bool AIBinder_isAlive(const AIBinder* binder) {
    return binder != nullptr && binder->isAlive();
}

void AIBinder_incStrong(AIBinder* binder) {
    if (binder != nullptr) binder->incStrong();
}

void AIBinder_decStrong(AIBinder* binder) {
    if (binder == nullptr) {
        BINDER_LOGE("AIBinder_decStrong: no object given");
        return;
    }
    binder->decStrong();
}

int32_t AIBinder_debugGetRefCount(AIBinder* binder) {
    return binder == nullptr ? -1 : binder->strongCount();
}

bool AIBinder_associateClass(AIBinder* binder, const AIBinder_Class* clazz) {
    return binder != nullptr && clazz != nullptr && binder->associateClass(clazz);
}

const AIBinder_Class* AIBinder_getClass(AIBinder* binder) {
    return binder == nullptr ? nullptr : binder->clazz();
}

void* AIBinder_getUserData(AIBinder* binder) {
    hostbinder::LocalBinder* local = binder == nullptr ? nullptr : binder->asLocal();
    return local == nullptr ? nullptr : local->userData();
}

binder_status_t AIBinder_setExtension(AIBinder* binder, AIBinder* ext) {
    if (binder == nullptr || ext == nullptr) return STATUS_UNEXPECTED_NULL;
    hostbinder::LocalBinder* local = binder->asLocal();
    if (local == nullptr) return STATUS_INVALID_OPERATION;
    local->setExtension(ext);
    return STATUS_OK;
}

void AIBinder_setRequestingSid(AIBinder*, bool) {}
const char* AIBinder_getCallingSid(void) {
    return nullptr;
}
void AIBinder_setMinSchedulerPolicy(AIBinder*, int, int) {}
void AIBinder_setInheritRt(AIBinder*, bool) {}
