// The allocator as a process: buffers that travel, and what it keeps of them.
#include <aidl/android/hardware/graphics/allocator/IAllocator.h>
#include <aidlcommonsupport/NativeHandle.h>
#include <android/binder_manager.h>
#include <graphics_core/buffer_handle.h>
#include <gtest/gtest.h>
#include <host_service_manager.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

namespace graphics {
namespace {

using ::aidl::android::hardware::graphics::allocator::AllocationResult;
using ::aidl::android::hardware::graphics::allocator::BufferDescriptorInfo;
using ::aidl::android::hardware::graphics::allocator::IAllocator;
using ::aidl::android::hardware::graphics::common::PixelFormat;

constexpr char kInstance[] = "android.hardware.graphics.allocator.IAllocator/default";

// Asks until the answer is yes, for at most 20 s.
template <typename Question>
bool eventually(Question question) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!question()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::yield();
    }
    return true;
}

// A process that ends with this object, and with the test.
class Program {
  public:
    Program(const char* path, const char* fault) {
        const pid_t parent = getpid();
        mPid = fork();
        if (mPid != 0) return;
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent) _exit(127);
        if (fault != nullptr) {
            execl(path, path, "--fault", fault, nullptr);
        } else {
            execl(path, path, nullptr);
        }
        _exit(127);
    }
    ~Program() {
        kill(mPid, SIGKILL);
        waitpid(mPid, nullptr, 0);
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    int openDescriptors() const {
        std::error_code ignored;
        const std::filesystem::directory_iterator folder("/proc/" + std::to_string(mPid) + "/fd",
                                                         ignored);
        return static_cast<int>(std::distance(begin(folder), end(folder)));
    }

  private:
    pid_t mPid;
};

class AllocatorProcessTest : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        std::string folder = testing::TempDir() + "graphicsallocatorXXXXXX";
        ASSERT_NE(mkdtemp(folder.data()), nullptr);
        sFolder = folder;
        setenv("STANDIN_BINDER_DIR", folder.c_str(), 1);
        sServiceManager = new Program(SERVICE_MANAGER_PROGRAM, nullptr);
        ASSERT_TRUE(eventually([] {
            return AServiceManager_forEachService(nullptr, [](const char*, void*) {}) == STATUS_OK;
        }));
    }

    static void TearDownTestSuite() {
        delete sServiceManager;
        std::error_code ignored;
        std::filesystem::remove_all(sFolder, ignored);
    }

    // The allocator, once it answers: an earlier one may still be registered for a moment.
    std::shared_ptr<IAllocator> find() {
        std::shared_ptr<IAllocator> allocator;
        std::string suffix;
        const bool found = eventually([&] {
            allocator = IAllocator::fromBinder(
                    ::ndk::SpAIBinder(AServiceManager_checkService(kInstance)));
            return allocator != nullptr && allocator->getIMapperLibrarySuffix(&suffix).isOk();
        });
        return found ? allocator : nullptr;
    }

    static BufferDescriptorInfo nv12Info() {
        BufferDescriptorInfo info;
        info.name.fill(0);
        info.width = 640;
        info.height = 480;
        info.layerCount = 1;
        info.format = PixelFormat::YCBCR_420_888;
        return info;
    }

    static BufferError check(const ::aidl::android::hardware::common::NativeHandle& buffer) {
        native_handle_t* raw = ::android::makeFromAidl(buffer);
        UniqueHandle handle;
        BufferInfo info;
        const Outcome outcome = duplicateBuffer(raw, &handle, &info);
        native_handle_delete(raw);
        return outcome.error;
    }

    static std::string sFolder;
    static Program* sServiceManager;
};

std::string AllocatorProcessTest::sFolder;
Program* AllocatorProcessTest::sServiceManager;

TEST_F(AllocatorProcessTest, BuffersTravelAndTheAllocatorKeepsNone) {
    const Program process(ALLOCATOR_PROGRAM, nullptr);
    const auto allocator = find();
    ASSERT_NE(allocator, nullptr);
    AllocationResult result;
    ASSERT_TRUE(allocator->allocate2(nv12Info(), 1, &result).isOk());
    int before = 0;
    // The reply may overtake the closing of what was sent.
    ASSERT_TRUE(eventually([&] {
        const int now = process.openDescriptors();
        const bool settled = now == before;
        before = now;
        return settled;
    }));
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(allocator->allocate2(nv12Info(), 64, &result).isOk());
        ASSERT_EQ(result.buffers.size(), 64u);
    }
    EXPECT_TRUE(eventually([&] { return process.openDescriptors() <= before; }))
            << process.openDescriptors() << " descriptors, " << before << " before";

    EXPECT_EQ(check(result.buffers[63]), BufferError::kNone);
}

TEST_F(AllocatorProcessTest, FaultIsSwitchedOnByItsName) {
    const Program process(ALLOCATOR_PROGRAM, "bad-handle");
    const auto allocator = find();
    ASSERT_NE(allocator, nullptr);
    AllocationResult result;
    ASSERT_TRUE(allocator->allocate2(nv12Info(), 1, &result).isOk());
    EXPECT_EQ(check(result.buffers.at(0)), BufferError::kBadBuffer);
}

}  // namespace
}  // namespace graphics
