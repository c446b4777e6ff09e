// Reference counts and stability of objects.
#include "ibinder.h"

#include <cstdlib>

#include "log.h"
#include "wire_format.h"

void AIBinder::DecStrong() {
    if (m_strong.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    OnLastStrongReference();
    DecWeak();
}

bool AIBinder::TryIncStrong() {
    int32_t count = m_strong.load(std::memory_order_relaxed);
    while (count > 0) {
        if (m_strong.compare_exchange_weak(count, count + 1, std::memory_order_acq_rel)) {
            return true;
        }
    }
    return false;
}

void AIBinder::DecWeak() {
    if (m_weak.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
}

int16_t AIBinder::DeclareStability() {
    int16_t level = hostbinder::kStabilityUndeclared;
    m_stability.compare_exchange_strong(level, hostbinder::kStabilitySystem);
    return m_stability;
}

void AIBinder::MarkStability(int16_t level) {
    int16_t old = hostbinder::kStabilityUndeclared;
    if (!m_stability.compare_exchange_strong(old, level) && old != level) {
        BINDER_LOGE("object of '%s' has stability level %d and cannot get level %d",
                    Class() == nullptr ? "?" : Class()->descriptor.c_str(), old, level);
        abort();
    }
}

bool AIBinder::AdoptStability(int32_t level) {
    using namespace hostbinder;
    if (level != kStabilityUndeclared && level != kStabilityVendor && level != kStabilitySystem &&
        level != kStabilityVintf) {
        return false;
    }
    if (AsLocal() == nullptr) m_stability = static_cast<int16_t>(level);
    return true;
}
