// The allocator's command line.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/services/graphicsallocator/allocator_faults.h"
#include "tests/end_to_end/subprocess.h"

namespace graphics {
namespace {

using end_to_end::Finished;

// Without STANDIN_BINDER_DIR unless `setting` sets it.
Finished runAllocator(const std::vector<std::string>& arguments, const char* setting = nullptr) {
    std::vector<std::string> words = {"env", "-u", "STANDIN_BINDER_DIR"};
    if (setting != nullptr) words.push_back(setting);
    words.push_back(ALLOCATOR_PROGRAM);
    words.insert(words.end(), arguments.begin(), arguments.end());
    return end_to_end::runProgram(words);
}

TEST(AllocatorProgram, ListsItsFaultsByTheNamesItTakes) {
    const Finished help = runAllocator({"--fault", "help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.out, allocatorFaultHelp());
    for (const char* name : {"allocate-error", "allocate-none", "allocate-two", "bad-handle"}) {
        EXPECT_NE(help.out.find(std::string("\n  ") + name + " "), std::string::npos);
        EXPECT_TRUE(allocatorFaultNamed(name).has_value());
    }
    EXPECT_FALSE(allocatorFaultNamed("help").has_value());
    EXPECT_FALSE(allocatorFaultNamed("").has_value());
}

TEST(AllocatorProgram, RefusesCommandLinesItDoesNotUnderstand) {
    const Finished unknown = runAllocator({"--fault", "no-such-fault"});
    EXPECT_EQ(unknown.status, 2);
    EXPECT_NE(unknown.err.find("no fault 'no-such-fault'"), std::string::npos) << unknown.err;
    EXPECT_EQ(runAllocator({"--fault"}).status, 2);
    EXPECT_EQ(runAllocator({"--fault", "bad-handle", "--fault", "bad-handle"}).status, 2);
    EXPECT_EQ(runAllocator({"word"}).status, 2);
    EXPECT_EQ(runAllocator({"--help"}).status, 0);
}

TEST(AllocatorProgram, EndsWhenItCannotBeReached) {
    const Finished alone = runAllocator({});
    EXPECT_EQ(alone.status, 1);
    EXPECT_NE(alone.err.find("STANDIN_BINDER_DIR is not set"), std::string::npos);

    const Finished unmanaged = runAllocator({}, "STANDIN_BINDER_DIR=/nonexistent");
    EXPECT_EQ(unmanaged.status, 1);
    EXPECT_NE(unmanaged.err.find("cannot register"), std::string::npos) << unmanaged.err;
}

}  // namespace
}  // namespace graphics
