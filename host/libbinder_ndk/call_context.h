// Which incoming call, if any, the current thread serves.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <utility>

namespace hostbinder {

struct CallContext {
    bool handling = false;
    uid_t uid = 0;
    pid_t pid = 0;
    uint64_t chain = 0;  // 0: none (no call, or a oneway call)
    int nesting = 0;     // incoming calls on this thread, this one included
};

// The current thread's.
CallContext& TheCallContext();

// Sets the context for the lifetime of the object, then restores the one before.
class ScopedCallContext {
  public:
    explicit ScopedCallContext(const CallContext& context)
        : m_outer(std::exchange(TheCallContext(), context)) {}
    ~ScopedCallContext() { TheCallContext() = m_outer; }
    ScopedCallContext(const ScopedCallContext&) = delete;
    ScopedCallContext& operator=(const ScopedCallContext&) = delete;

  private:
    const CallContext m_outer;
};

}  // namespace hostbinder
