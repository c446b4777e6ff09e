// Numbers that no other process can guess: of objects, so that only who was given an object can ask
// for it, and of call chains, so that only who takes part in one can call its threads.
#pragma once

#include <cstdint>

namespace hostbinder {

// Never 0, and different in all processes.
uint64_t newSecretNumber();

}  // namespace hostbinder
