// Start-up of the graphics back-ends: what is logged and what is left for each thing that fails.
// A mapper that was loaded stays with its process, so each case needs a process of its own.

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <host_mapper_registry.h>

#include <cstdlib>
#include <ostream>
#include <utility>

#include "gralloc/graphicsstartup.h"
#include "tests/support/fake_services.h"
#include "tests/support/log_capture.h"
#include "tests/support/memory_mapper.h"

using namespace ::vendor::zel::hardware::camera::offlinecamera::implementation;
using ::testing::ElementsAre;

namespace test {
namespace {

const char kLookup[] = "I mapper android.hardware.graphics.allocator.IAllocator/default";
const char kUsing[] = "D Using AIDL IAllocator + HIDL IMapper v4.0";
const char kNoInstance[] = "E Gralloc Init failed, reason zelAidlMapper getInstance failed";

class GraphicsStartup : public ::testing::Test {
  public:
    GraphicsStartup() {
        setenv("STANDIN_HAL_PATH", MAPPER_LIBRARIES, 1);
        EXPECT_EQ(mapper->registerAsService(), 0);
        SetService(kAllocatorInstance, allocator->asBinder());
    }

    void SetUp() override {
        static bool used = false;
        if (std::exchange(used, true)) GTEST_SKIP() << "needs a new process, as under ctest";
    }

    // Both starts, as the client's constructor makes them. The lines logged.
    std::vector<std::string> Start() {
        const GraphicsServices services = ConnectGraphicsServices();
        wrapper = StartGrallocWrapper(services);
        record = std::make_unique<OfflineCameraZelInterface>();
        StartZelInterface(services.allocator, record.get());
        return log.Take();
    }

    void ExpectEmptyRecord() {
        EXPECT_EQ(record->m_allocator, nullptr);
        EXPECT_EQ(record->m_aiMapper, nullptr);
    }

    LogCapture log;
    Calls calls;
    ::android::sp<MemoryMapper> mapper = new MemoryMapper(&calls);
    std::shared_ptr<FakeAllocator> allocator = ::ndk::SharedRefBase::make<FakeAllocator>(&calls);
    std::unique_ptr<OfflineCameraGralloc> wrapper;
    std::unique_ptr<OfflineCameraZelInterface> record;
};

TEST_F(GraphicsStartup, UsesTheDefaultLibraryWhenTheAllocatorNamesNone) {
    EXPECT_THAT(Start(), ElementsAre(kLookup, kUsing));
    EXPECT_NE(wrapper, nullptr);
    EXPECT_EQ(record->m_allocator, allocator);
    ASSERT_NE(record->m_aiMapper, nullptr);
    EXPECT_EQ(record->m_aiMapper->version, AIMAPPER_VERSION_5);
    EXPECT_EQ(record->m_planeLayoutInterface, nullptr);

    AIMapper* const loaded = record->m_aiMapper;
    EXPECT_THAT(Start(),
                ElementsAre(kLookup, kUsing, "I Using previously loaded IMapper library."));
    EXPECT_EQ(record->m_aiMapper, loaded);
    EXPECT_THAT(calls, ElementsAre("getIMapperLibrarySuffix"));
}

TEST_F(GraphicsStartup, AcceptsALibraryWithoutVersionSymbolFromAFailedAnswer) {
    allocator->suffix = "unversioned";
    allocator->suffixFails = true;  // which nobody asks about
    EXPECT_THAT(Start(), ElementsAre(kLookup, kUsing));
    ASSERT_NE(record->m_aiMapper, nullptr);
    EXPECT_EQ(static_cast<int>(record->m_aiMapper->version), 4);
}

struct BadLibrary {
    std::string suffix;
    std::string line;
    bool stays;  // for a later start in the same process
};

void PrintTo(const BadLibrary& library, std::ostream* out) {
    *out << library.suffix;
}

class BadMapperLibrary : public GraphicsStartup,
                         public ::testing::WithParamInterface<BadLibrary> {};

TEST_P(BadMapperLibrary, LeavesAnEmptyRecord) {
    allocator->suffix = GetParam().suffix;
    long held[2] = {};
    log.AtLine(GetParam().line.substr(2), [&] { held[0] = allocator.use_count(); });
    log.AtLine("Gralloc Init failed", [&] { held[1] = allocator.use_count(); });
    EXPECT_THAT(Start(), ElementsAre(kLookup, kUsing, GetParam().line, kNoInstance));
    EXPECT_NE(wrapper, nullptr);
    ExpectEmptyRecord();
    EXPECT_EQ(held[0], held[1] + 1);  // the second look-up's reference lasts until the decision

    // A refused library stays open, and its mapper is taken unchecked from then on; one that never
    // came is looked for again.
    const std::string path = MAPPER_LIBRARIES "/mapper." + GetParam().suffix + ".so";
    EXPECT_EQ(dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD) != nullptr, GetParam().stays);
    allocator->suffix = "zel";
    const auto later = Start();
    EXPECT_EQ(later.back() == "I Using previously loaded IMapper library.", GetParam().stays);
    EXPECT_NE(record->m_aiMapper, nullptr);
}

const std::string kVersion = "E IMapper version ";
const std::string kNotKnown = " not equal to last known stable version 5, aborting IMapper init.";

INSTANTIATE_TEST_SUITE_P(
        All, BadMapperLibrary,
        ::testing::Values(BadLibrary{"missing", "E Failed to load mapper.missing.so", false},
                          BadLibrary{"failing", "E AIMapper_loadIMapper failed 7", true},
                          BadLibrary{"table4", kVersion + "5" + kNotKnown, true},
                          BadLibrary{"table6", kVersion + "5" + kNotKnown, true},
                          BadLibrary{"library4", kVersion + "4" + kNotKnown, true}),
        [](const auto& info) { return info.param.suffix; });

TEST_F(GraphicsStartup, DiesOfALibraryWithoutLoader) {
    allocator->suffix = "loaderless";
    EXPECT_DEATH(Start(), "");
}

TEST_F(GraphicsStartup, WithoutAllocatorLoadsNothing) {
    SetService(kAllocatorInstance, {});
    EXPECT_THAT(
            Start(),
            ElementsAre(kLookup, "E Gralloc Init failed, reason zelAllocator getService failed"));
    EXPECT_EQ(wrapper, nullptr);
    ExpectEmptyRecord();
}

TEST_F(GraphicsStartup, WithAnAllocatorThatGoesAwayUsesTheDefaultLibrary) {
    SetService(kAllocatorInstance, allocator->asBinder(), 1);
    EXPECT_THAT(Start(),
                ElementsAre(kLookup, kUsing,
                            "W Unable to get allocator, using previously known IMapper library "
                            "suffix 'zel'"));
    EXPECT_NE(record->m_aiMapper, nullptr);
    EXPECT_EQ(record->m_allocator, allocator);
    EXPECT_TRUE(calls.empty());
}

TEST_F(GraphicsStartup, WithoutMapperStillFillsTheRecord) {
    host::unregisterMapper();
    EXPECT_THAT(Start(), ElementsAre(kLookup));
    EXPECT_EQ(wrapper, nullptr);
    EXPECT_EQ(record->m_allocator, allocator);
    EXPECT_NE(record->m_aiMapper, nullptr);
}

// The line is written between the two look-ups.
TEST_F(GraphicsStartup, LooksForTheMapperBeforeTheAllocator) {
    SetService(kAllocatorInstance, {});
    log.AtLine("mapper ", [this] {
        host::unregisterMapper();
        SetService(kAllocatorInstance, allocator->asBinder());
    });
    Start();
    EXPECT_NE(wrapper, nullptr);
}

TEST_F(GraphicsStartup, UsesARemoteMapperAllTheSame) {
    mapper->remote = true;
    EXPECT_THAT(Start(), ElementsAre(kLookup, kUsing, "E Mapper is in passthrough mode"));
    EXPECT_NE(wrapper, nullptr);
}

}  // namespace
}  // namespace test
