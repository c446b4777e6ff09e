// A piece of work for a thread of the pool.
#pragma once

namespace hostbinder {

class Work {
  public:
    virtual ~Work() = default;
    virtual void run() = 0;
};

}  // namespace hostbinder
