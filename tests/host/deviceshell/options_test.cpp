// Options, the plan and the file system: what deviceshell decides before it starts anything.

#include "options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "device_plan.h"
#include "faults.h"
#include "sandbox.h"

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

namespace deviceshell {
namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

std::string errorOf(const Words& arguments) {
    std::string error;
    EXPECT_FALSE(parseOptions(arguments, &error)) << "accepted";
    return error;
}

Options parsed(const Words& arguments) {
    std::string error;
    const std::optional<Options> options = parseOptions(arguments, &error);
    EXPECT_TRUE(options) << error;
    return options.value_or(Options());
}

TEST(DeviceshellOptions, EndAtTheFirstPlainWord) {
    const Options options = parsed({"--data", "d", "--log=l", "-v", "sh", "-v", "--data", "x"});
    EXPECT_EQ(options.dataFolder, "d");
    EXPECT_EQ(options.logFile, "l");
    EXPECT_TRUE(options.verbose);
    EXPECT_THAT(options.command, ElementsAre("sh", "-v", "--data", "x"));
    EXPECT_THAT(parsed({"--planes", "--", "--help"}).command, ElementsAre("--help"));
}

TEST(DeviceshellOptions, ErrorsNameTheirCause) {
    EXPECT_THAT(errorOf({"--datum", "d", "true"}), HasSubstr("--datum"));
    EXPECT_THAT(errorOf({"--log=", "true"}), HasSubstr("--log needs a value"));
    EXPECT_THAT(errorOf({"--run-record", "r", "true"}), HasSubstr("--run-record"));
    EXPECT_THAT(errorOf({"--no-service", "--service", "s", "true"}), HasSubstr("--no-service"));
}

// A folder of programs that only tell their faults, as scripts.
class Programs : public ::testing::Test {
  protected:
    Programs() {
        std::string name = ::testing::TempDir() + "deviceshell-XXXXXX";
        m_folder = mkdtemp(name.data());
        addProgram("servicemanager", "");
        addProgram("graphicsallocator", "bad-handle  gives a broken handle");
        addProgram("offlinecameraservice", "no-shutter   leaves it out\nlend[=N]  borrows\n");
    }
    ~Programs() override { fs::remove_all(m_folder); }

    void addProgram(const std::string& name, const std::string& text) {
        const std::string path = m_folder + "/" + name;
        std::ofstream(path) << "#!/bin/sh\ncase $* in *=bad*|*handle*handle*)\n"
                               "echo NAME: not so >&2; exit 2;; esac\n"
                               "cat <<END\n"
                            << text << "\nEND\n";
        chmod(path.c_str(), 0755);
    }

    // The programs' arguments in the order of their start.
    std::vector<Words> plannedFor(const Words& arguments) {
        std::vector<Words> programs;
        m_error.clear();
        const std::optional<DevicePlan> plan =
                makePlan(parsed(arguments), m_folder, ShellKind::Script, &m_error);
        if (!plan) return programs;
        for (const DeviceProgram& program : plan->programs) {
            Words words = program.argv;
            words[0] = fs::path(words[0]).filename();
            programs.push_back(words);
        }
        return programs;
    }

    std::string m_folder;
    std::string m_error;
};

TEST_F(Programs, AreChosenByTheOptions) {
    EXPECT_THAT(plannedFor({"true"}),
                ElementsAre(Words{"servicemanager"}, Words{"graphicsallocator"},
                            Words{"offlinecameraservice"}));
    EXPECT_THAT(plannedFor({"--no-service", "--no-allocator", "true"}),
                ElementsAre(Words{"servicemanager"}));
    EXPECT_THAT(plannedFor({"--service", "/bin/cat", "true"}),
                ElementsAre(Words{"servicemanager"}, Words{"graphicsallocator"}, Words{"cat"}));
}

TEST_F(Programs, GetTheFaultsTheyKnow) {
    EXPECT_THAT(plannedFor({"--fault", "lend=3", "--fault", "bad-handle", "true"}),
                ElementsAre(Words{"servicemanager"},
                            Words{"graphicsallocator", "--fault", "bad-handle"},
                            Words{"offlinecameraservice", "--fault", "lend=3"}));
}

TEST_F(Programs, RefuseFaultsThatNobodyCanShow) {
    const struct {
        Words arguments;
        const char* error;
    } refused[] = {{{"--fault", "lendx"}, "lendx: unknown"},
                   {{"--fault", "lend=bad"}, "lend=bad: refused by NAME: not so"},
                   {{"--fault", "bad-handle", "--fault=bad-handle"}, "refused by NAME: not so"},
                   {{"--fault", "lend", "--no-service"}, "its program is left out"},
                   {{"--fault", "bad-handle", "--no-allocator"}, "its program is left out"},
                   {{"--fault", "lend", "--service", "/bin/cat"}, "not of /bin/cat"}};
    for (const auto& wrong : refused) {
        EXPECT_TRUE(plannedFor(wrong.arguments).empty()) << wrong.error;
        EXPECT_THAT(m_error,
                    AllOf(HasSubstr("--fault " + wrong.arguments[1]), HasSubstr(wrong.error)));
    }
}

TEST_F(Programs, MissingOnesAreNamed) {
    fs::remove(m_folder + "/graphicsallocator");
    EXPECT_TRUE(plannedFor({"true"}).empty());
    EXPECT_THAT(m_error, HasSubstr(m_folder + "/graphicsallocator"));
    EXPECT_TRUE(plannedFor({"--no-allocator", "--planes", "true"}).empty());
    EXPECT_THAT(m_error, HasSubstr("vexofflinecameratest-planes"));
}

TEST(DevicePlanWords, DamagedOnesAreRefused) {
    DevicePlan plan;
    plan.programs = {{{"/bin/a"}, "n"}};
    plan.command = {"true"};
    const Words words = encodePlan(plan);
    EXPECT_TRUE(decodePlan(words));
    for (size_t length = 0; length < words.size(); ++length) {
        EXPECT_FALSE(decodePlan(Words(words.begin(), words.begin() + static_cast<long>(length))))
                << length << " words";
    }
    Words damaged = words;
    damaged[9] = "9999999999";  // number of programs
    EXPECT_FALSE(decodePlan(damaged));
    damaged = words;
    damaged[8] = "3";  // kind of shell
    EXPECT_FALSE(decodePlan(damaged));
}

// The host may have folders where the device has its own places.
TEST(DeviceFileSystem, KeepsTheHostsOwnDataAndVendorFoldersVisible) {
    std::string name = ::testing::TempDir() + "root-XXXXXX";
    const std::string root = mkdtemp(name.data());
    fs::create_directories(root + "/data/vendor/camera/private");
    fs::create_directories(root + "/data/projects");
    fs::create_directories(root + "/usr/bin");
    fs::create_directory_symlink("usr/bin", root + "/bin");
    const Words arguments = mirrorArguments(root, {"/data/vendor/camera", "/dev"});
    EXPECT_THAT(arguments, ElementsAre("--symlink", "usr/bin", "/bin", "--ro-bind-try",
                                       root + "/data/projects", "/data/projects", "--ro-bind-try",
                                       root + "/usr", "/usr"));
    fs::remove_all(root);
}

}  // namespace
}  // namespace deviceshell
