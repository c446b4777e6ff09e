// Ways in which the allocator misbehaves on demand.
#pragma once

#include <optional>
#include <string>

namespace graphics {

enum class AllocatorFault {
    kNone,
    kAllocateError,
    kAllocateNone,
    kAllocateTwo,
    kBadHandle,
};

// Empty for an unknown name. AllocatorFault::kNone has no name.
std::optional<AllocatorFault> allocatorFaultNamed(const std::string& name);

// One line per fault: its name and what it does.
std::string allocatorFaultHelp();

}  // namespace graphics
