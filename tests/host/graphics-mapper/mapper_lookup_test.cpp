// Which mapper IMapper::getService() finds.
#include <gtest/gtest.h>
#include <host_mapper_registry.h>

#include <cstdlib>
#include <string>

#include "tests/host/graphics-mapper/fake_mapper.h"

namespace {

using ::android::OK;
using ::android::sp;
using fake::Error;
using fake::FakeMapper;
using fake::IMapper;

// What tells the mappers apart: the vendor's knows no null buffer.
constexpr Error kVendors = Error::BAD_BUFFER;
constexpr Error kRegistered = Error::NO_RESOURCES;

// Which mapper it is; NONE for no mapper.
Error MarkOf(const sp<IMapper>& mapper) {
    return mapper == nullptr ? Error::NONE : static_cast<Error>(mapper->freeBuffer(nullptr));
}

TEST(MapperLookup, TheVendorsLibraryProvidesTheDefault) {
    EXPECT_EQ(MarkOf(IMapper::getService()), kVendors);
    EXPECT_EQ(MarkOf(IMapper::getService("missing")), Error::NONE);
    const std::string folder = getenv("STANDIN_HAL_PATH");
    for (const char* other : {MAPPER_MODULES, "/nowhere"}) {
        setenv("STANDIN_HAL_PATH", other, 1);
        EXPECT_EQ(IMapper::getService(), nullptr) << other;
    }
    setenv("STANDIN_HAL_PATH", folder.c_str(), 1);
}

TEST(MapperLookup, ARegisteredMapperIsFoundFirst) {
    bool destroyed = false;
    ASSERT_EQ((sp<IMapper>(new FakeMapper(kRegistered, &destroyed))->registerAsService()), OK);
    EXPECT_EQ(MarkOf(IMapper::getService()), kRegistered);
    EXPECT_EQ(MarkOf(IMapper::getService("default", true)), kVendors);
    ASSERT_EQ((sp<IMapper>(new FakeMapper(kRegistered))->registerAsService()), OK);
    EXPECT_TRUE(destroyed) << "another one has replaced it";
    host::unregisterMapper();
    EXPECT_EQ(MarkOf(IMapper::getService()), kVendors);
    EXPECT_NE((sp<IMapper>(new FakeMapper(kRegistered))->registerAsService("")), OK);
}

}  // namespace
