// Stability levels of objects.
#include <android/binder_stability.h>

#include <cstdlib>

#include "ibinder.h"
#include "log.h"
#include "wire_format.h"

using hostbinder::kStabilitySystem;
using hostbinder::kStabilityUndeclared;
using hostbinder::kStabilityVendor;
using hostbinder::kStabilityVintf;

int16_t AIBinder::declaredStability() {
    int16_t level = kStabilityUndeclared;
    mStability.compare_exchange_strong(level, kStabilitySystem);
    return mStability;
}

void AIBinder::markStability(int16_t level) {
    int16_t old = kStabilityUndeclared;
    if (!mStability.compare_exchange_strong(old, level) && old != level) {
        BINDER_LOGE("object of '%s' has stability level %d and cannot get level %d",
                    clazz() == nullptr ? "?" : clazz()->descriptor.c_str(), old, level);
        abort();
    }
}

bool AIBinder::adoptStability(int32_t level) {
    if (level != kStabilityUndeclared && level != kStabilityVendor && level != kStabilitySystem &&
        level != kStabilityVintf) {
        return false;
    }
    if (asLocal() == nullptr) mStability = static_cast<int16_t>(level);
    return true;
}

void AIBinder_markVendorStability(AIBinder* binder) {
    binder->markStability(kStabilityVendor);
}
void AIBinder_markSystemStability(AIBinder* binder) {
    binder->markStability(kStabilitySystem);
}
void AIBinder_markVintfStability(AIBinder* binder) {
    binder->markStability(kStabilityVintf);
}

void AIBinder_forceDowngradeToVendorStability(AIBinder* binder) {
    binder->forceStability(kStabilityVendor);
}
void AIBinder_forceDowngradeToSystemStability(AIBinder* binder) {
    binder->forceStability(kStabilitySystem);
}
