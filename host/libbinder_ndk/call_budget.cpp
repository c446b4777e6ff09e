// Counting what incoming calls hold.
#include "call_budget.h"

#include <android/binder_ibinder.h>

namespace hostbinder {

namespace {

constexpr size_t kCallOverhead = 512;  // bytes for the call itself

static_assert(kMaxParcelBytes + kCallOverhead <= CallBudget::kBytes / 2, "any message fits alone");

bool fits(const CallShare& used, const CallShare& cost, size_t factor) {
    return used.bytes + cost.bytes <= CallBudget::kBytes * factor &&
           used.onewayBytes + cost.onewayBytes <= CallBudget::kBytes * factor / 2 &&
           used.descriptors + cost.descriptors <= CallBudget::kDescriptors * factor;
}

void add(CallShare* share, const CallShare& cost) {
    share->bytes += cost.bytes;
    share->onewayBytes += cost.onewayBytes;
    share->descriptors += cost.descriptors;
}

void subtract(CallShare* share, const CallShare& cost) {
    share->bytes -= cost.bytes;
    share->onewayBytes -= cost.onewayBytes;
    share->descriptors -= cost.descriptors;
}

}  // namespace

CallBudget& CallBudget::instance() {
    static CallBudget* const budget = new CallBudget;
    return *budget;
}

CallShare CallBudget::costOf(const FrameHeader& header) {
    CallShare cost;
    cost.bytes = header.dataSize + kCallOverhead;
    if ((header.flags & FLAG_ONEWAY) != 0) cost.onewayBytes = cost.bytes;
    cost.descriptors = header.descriptorCount;
    return cost;
}

bool CallBudget::take(CallShare* connection, const CallShare& cost) {
    std::lock_guard<std::mutex> lock(mMutex);
    if (!fits(*connection, cost, 1) || !fits(mProcess, cost, 2)) return false;
    add(connection, cost);
    add(&mProcess, cost);
    return true;
}

void CallBudget::giveBack(CallShare* connection, const CallShare& cost) {
    std::lock_guard<std::mutex> lock(mMutex);
    subtract(connection, cost);
    subtract(&mProcess, cost);
}

}  // namespace hostbinder
