// Counting what incoming calls hold.
#include "call_budget.h"

#include <android/binder_ibinder.h>

namespace hostbinder {

namespace {

constexpr size_t kCallOverhead = 512;  // bytes for the call itself
constexpr size_t kPeers = 8;           // that may take all of their share at a time

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

bool CallBudget::take(pid_t peer, const CallShare& cost) {
    std::lock_guard<std::mutex> lock(mMutex);
    const auto found = mByPeer.find(peer);
    const CallShare used = found == mByPeer.end() ? CallShare() : found->second;
    if (!fits(used, cost, 1) || !fits(mAll, cost, kPeers)) return false;
    add(&mByPeer[peer], cost);
    add(&mAll, cost);
    return true;
}

void CallBudget::giveBack(pid_t peer, const CallShare& cost) {
    std::lock_guard<std::mutex> lock(mMutex);
    const auto found = mByPeer.find(peer);
    subtract(&found->second, cost);
    if (found->second.bytes == 0) mByPeer.erase(found);
    subtract(&mAll, cost);
}

}  // namespace hostbinder
