// The names of the allocator's faults.
#include "allocator_faults.h"

namespace graphics {

namespace {

constexpr struct {
    AllocatorFault fault;
    const char* name;
    const char* text;
} kFaults[] = {
        {AllocatorFault::kAllocateError, "allocate-error",
         "every allocation fails for want of memory"},
        {AllocatorFault::kAllocateNone, "allocate-none",
         "an allocation succeeds but brings no buffer"},
        {AllocatorFault::kAllocateTwo, "allocate-two",
         "an allocation brings two buffers, whatever was asked for"},
        {AllocatorFault::kBadHandle, "bad-handle",
         "the integers of a new buffer's handle lie about its size"},
};

}  // namespace

std::optional<AllocatorFault> allocatorFaultNamed(const std::string& name) {
    for (const auto& entry : kFaults) {
        if (name == entry.name) return entry.fault;
    }
    return std::nullopt;
}

std::string allocatorFaultHelp() {
    std::string text = "Faults of the graphics allocator:\n";
    for (const auto& entry : kFaults) {
        std::string name = entry.name;
        name.resize(20, ' ');
        text += "  " + name + entry.text + "\n";
    }
    return text;
}

}  // namespace graphics
