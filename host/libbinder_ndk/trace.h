// The trace of transactions: two lines each, one when it begins and one when it ends, to the
// descriptor in STANDIN_BINDER_TRACE_FD.
#pragma once

#include <android/binder_ibinder.h>

#include <chrono>
#include <string>

namespace hostbinder {

// One transaction, from its beginning to its end. Costs nothing if there is no trace.
class TracedCall {
  public:
    enum class Direction { kOut, kIn };

    // Writes the first line. clazz may be null.
    TracedCall(Direction direction, const std::string& peer, const AIBinder_Class* clazz,
               transaction_code_t code, binder_flags_t flags, const AParcel& request);
    // Writes the second line, with the status that the reply may carry; its position stays.
    void End(binder_status_t status, const AParcel& reply) const;

  private:
    void WriteLine(const std::string& end) const;

    const bool m_enabled;
    std::string m_what;
    std::chrono::steady_clock::time_point m_start;
};

}  // namespace hostbinder
