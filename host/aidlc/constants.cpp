// Integers as AIDL computes them: in 32 bits unless one of 64 takes part.
#include "constants.h"

#include <charconv>
#include <limits>

namespace aidlc {
namespace {

// An int keeps the lower bits.
Constant MakeConstant(uint64_t bits, bool isLong) {
    const auto narrow = static_cast<int32_t>(static_cast<uint32_t>(bits));
    return {isLong ? static_cast<int64_t>(bits) : narrow, isLong};
}

}  // namespace

int64_t Largest(int bits) {
    return static_cast<int64_t>(std::numeric_limits<uint64_t>::max() >> (65 - bits));
}

bool Fits(int64_t value, int bits) {
    return value <= Largest(bits) && value >= -Largest(bits) - 1;
}

base::Result<Constant> ReadInteger(const std::string& text) {
    std::string digits = text;
    const bool isLong = digits.back() == 'L' || digits.back() == 'l';
    if (isLong) digits.pop_back();
    const bool isHex = digits.size() > 2 && (digits[1] == 'x' || digits[1] == 'X');
    const bool isOctal = !isHex && digits.size() > 1 && digits[0] == '0';
    uint64_t number = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] =
            std::from_chars(digits.data() + (isHex ? 2 : 0), end, number, isHex ? 16 : 10);
    if (stop != end || error == std::errc::invalid_argument || isOctal) {
        return base::Failure{"'" + text +
                             "' is not supported here: write an integer, in decimal or as 0x..."};
    }
    // A hexadecimal constant is a bit pattern, so 0xffffffff is the int -1.
    if (error != std::errc() || (!isHex && number > static_cast<uint64_t>(Largest(64)))) {
        return base::Failure{"'" + text + "' does not fit 64 bits"};
    }
    const uint64_t intLimit =
            isHex ? std::numeric_limits<uint32_t>::max() : static_cast<uint64_t>(Largest(32));
    return MakeConstant(number, isLong || number > intLimit);
}

Constant Negate(const Constant& operand) {
    return MakeConstant(0 - static_cast<uint64_t>(operand.value), operand.isLong);
}

base::Result<Constant> ShiftLeft(const Constant& left, const Constant& count) {
    const int64_t largest = left.isLong ? 63 : 31;
    if (count.value < 0 || count.value > largest) {
        return base::Failure{"a shift by " + std::to_string(count.value) + " is outside 0.." +
                             std::to_string(largest) + " (1L instead of 1 has 64 bits)"};
    }
    return MakeConstant(static_cast<uint64_t>(left.value) << count.value, left.isLong);
}

Constant Or(const Constant& left, const Constant& right) {
    return {left.value | right.value, left.isLong || right.isLong};
}

}  // namespace aidlc
