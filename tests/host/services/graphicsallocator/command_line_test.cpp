// The allocator's command line.
#include <gtest/gtest.h>
#include <stdio.h>
#include <sys/wait.h>

#include <string>

#include "host/services/graphicsallocator/allocator_faults.h"

namespace graphics {
namespace {

struct Ended {
    int status;
    std::string output;
};

Ended runAllocator(const std::string& environment, const std::string& arguments) {
    const std::string command = "timeout 20 env -u STANDIN_BINDER_DIR " + environment +
                                " " ALLOCATOR_PROGRAM " " + arguments + " 2>&1";
    FILE* pipe = popen(command.c_str(), "r");
    std::string output;
    char part[256];
    while (size_t count = fread(part, 1, sizeof(part), pipe)) output.append(part, count);
    const int status = pclose(pipe);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

TEST(AllocatorProgram, ListsItsFaultsByTheNamesItTakes) {
    const Ended help = runAllocator("", "--fault help");
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.output, allocatorFaultHelp());
    for (const char* name : {"allocate-error", "allocate-none", "allocate-two", "bad-handle"}) {
        EXPECT_NE(help.output.find(std::string("\n  ") + name + " "), std::string::npos);
        EXPECT_TRUE(allocatorFaultNamed(name).has_value());
    }
    EXPECT_FALSE(allocatorFaultNamed("help").has_value());
    EXPECT_FALSE(allocatorFaultNamed("").has_value());
}

TEST(AllocatorProgram, RefusesCommandLinesItDoesNotUnderstand) {
    const Ended unknown = runAllocator("", "--fault no-such-fault");
    EXPECT_EQ(unknown.status, 2);
    EXPECT_NE(unknown.output.find("no fault 'no-such-fault'"), std::string::npos) << unknown.output;
    EXPECT_EQ(runAllocator("", "--fault").status, 2);
    EXPECT_EQ(runAllocator("", "--fault bad-handle --fault allocate-two").status, 2);
    EXPECT_EQ(runAllocator("", "word").status, 2);
    EXPECT_EQ(runAllocator("", "--help").status, 0);
}

TEST(AllocatorProgram, EndsWhenItCannotBeReached) {
    const Ended alone = runAllocator("", "");
    EXPECT_EQ(alone.status, 1);
    EXPECT_NE(alone.output.find("STANDIN_BINDER_DIR is not set"), std::string::npos);

    const Ended unmanaged = runAllocator("STANDIN_BINDER_DIR=/nonexistent", "");
    EXPECT_EQ(unmanaged.status, 1);
    EXPECT_NE(unmanaged.output.find("cannot register"), std::string::npos) << unmanaged.output;
}

}  // namespace
}  // namespace graphics
