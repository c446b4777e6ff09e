// Random numbers, taken from the kernel many at a time.
#include "secret_numbers.h"

#include <sys/random.h>
#include <unistd.h>

#include <array>
#include <mutex>

namespace hostbinder {

namespace {

class SecretNumbers {
  public:
    uint64_t next() {
        std::lock_guard<std::mutex> lock(mMutex);
        uint64_t number = 0;
        while (number == 0) {
            if (mLeft == 0) refill();
            number = mNumbers[--mLeft];
        }
        return number;
    }

  private:
    void refill() {
        mLeft = mNumbers.size();
        const size_t bytes = mLeft * sizeof(mNumbers[0]);
        if (getrandom(mNumbers.data(), bytes, 0) == static_cast<ssize_t>(bytes)) return;
        // A kernel without random numbers: different ones, at least.
        for (uint64_t& number : mNumbers) {
            number = (static_cast<uint64_t>(getpid()) << 32) + ++mCount;
        }
    }

    std::mutex mMutex;                    // guards what follows
    std::array<uint64_t, 32> mNumbers{};  // so many at once are never interrupted
    size_t mLeft = 0;
    uint64_t mCount = 0;
};

}  // namespace

uint64_t newSecretNumber() {
    static SecretNumbers* const numbers = new SecretNumbers;
    return numbers->next();
}

}  // namespace hostbinder
