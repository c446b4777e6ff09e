// Integers as AIDL computes them: in 32 bits unless one of 64 takes part.
#pragma once

#include <base/result.h>

#include <cstdint>
#include <string>

namespace aidlc {

struct Constant {
    int64_t value = 0;
    bool isLong = false;
};

// Failures say what is wrong with the operands.
base::Result<Constant> ReadInteger(const std::string& text);
Constant Negate(const Constant& operand);
base::Result<Constant> ShiftLeft(const Constant& left, const Constant& count);
Constant Or(const Constant& left, const Constant& right);

// The largest signed integer of 8, 32 or 64 bits, and whether a value fits them.
int64_t Largest(int bits);
bool Fits(int64_t value, int bits);

}  // namespace aidlc
