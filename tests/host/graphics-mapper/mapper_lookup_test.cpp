// Which mapper IMapper::getService() finds.
#include <gtest/gtest.h>
#include <host_mapper_registry.h>

#include <cstdlib>
#include <string>

#include "tests/host/graphics-mapper/fake_mapper.h"

namespace {

using ::android::BAD_VALUE;
using ::android::OK;
using ::android::sp;
using ::android::hardware::hidl_string;
using fake::Error;
using fake::FakeMapper;
using fake::IMapper;

// What the module's mapper answers; registered ones answer something else.
constexpr Error kFromModule = Error::NO_RESOURCES;
constexpr Error kRegistered = Error::UNSUPPORTED;

class MapperLookupTest : public ::testing::Test {
  protected:
    MapperLookupTest() { useModule("good"); }
    ~MapperLookupTest() override {
        host::unregisterMapper();
        host::unregisterMapper("other");
    }

    void useModule(const std::string& kind) {
        setenv("STANDIN_HAL_PATH", (std::string(MAPPER_MODULES) + "/" + kind).c_str(), 1);
    }

    // Which mapper it is; NONE for no mapper.
    Error mark(const sp<IMapper>& mapper) {
        return mapper == nullptr ? Error::NONE : static_cast<Error>(mapper->freeBuffer(nullptr));
    }
};

TEST_F(MapperLookupTest, TheVendorsLibraryProvidesTheDefault) {
    const sp<IMapper> mapper = IMapper::getService();
    ASSERT_EQ(mark(mapper), kFromModule);
    EXPECT_FALSE(mapper->isRemote());
    EXPECT_EQ(mark(IMapper::tryGetService()), kFromModule);
    EXPECT_EQ(mark(IMapper::getService("missing")), Error::NONE);
}

TEST_F(MapperLookupTest, ALibraryThatIsNoneGivesNull) {
    for (const char* kind : {"symbolless", "empty", "no_such_folder"}) {
        useModule(kind);
        EXPECT_EQ(IMapper::getService(), nullptr) << kind;
    }
}

TEST_F(MapperLookupTest, ARegisteredMapperIsFoundFirst) {
    const sp<IMapper> fakeMapper = new FakeMapper(kRegistered);
    ASSERT_EQ(fakeMapper->registerAsService(), OK);
    EXPECT_EQ(IMapper::getService(), fakeMapper);
    EXPECT_EQ(IMapper::tryGetService(), fakeMapper);
    EXPECT_EQ(mark(IMapper::getService(true)), kFromModule);  // the bool overload: stub wanted
    ASSERT_EQ(fakeMapper->registerAsService("other"), OK);
    EXPECT_EQ(IMapper::getService(std::string("other")), fakeMapper);
    EXPECT_EQ(IMapper::tryGetService(hidl_string("other")), fakeMapper);
    EXPECT_EQ(fakeMapper->registerAsService(""), BAD_VALUE);
}

TEST_F(MapperLookupTest, UnregisteringReleasesTheMapper) {
    bool firstDestroyed = false;
    bool secondDestroyed = false;
    ASSERT_EQ((sp<IMapper>(new FakeMapper(kRegistered, &firstDestroyed))->registerAsService()), OK);
    EXPECT_FALSE(firstDestroyed);
    ASSERT_EQ((sp<IMapper>(new FakeMapper(kRegistered, &secondDestroyed))->registerAsService()),
              OK);
    EXPECT_TRUE(firstDestroyed);
    host::unregisterMapper();
    EXPECT_TRUE(secondDestroyed);
    host::unregisterMapper();
    EXPECT_EQ(mark(IMapper::getService()), kFromModule);
}

}  // namespace
