// Which mapper IMapper::getService() finds.
#include <gtest/gtest.h>
#include <host_mapper_registry.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "tests/host/graphics-mapper/fake_mapper.h"
#include "tests/support/temporary_folder.h"

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
    EXPECT_EQ(MarkOf(IMapper::getService(std::string("missing"))), Error::NONE);
    const std::string folder = getenv("STANDIN_HAL_PATH");
    // A library of the implementation's name that is another one.
    const TemporaryFolder other("mapper-modules");
    const std::string wrong = other.Path("android.hardware.graphics.mapper@4.0-impl-zel.so");
    ASSERT_EQ(symlink((folder + "/mapper.zel.so").c_str(), wrong.c_str()), 0);
    setenv("STANDIN_HAL_PATH", other.Path().c_str(), 1);
    EXPECT_EQ(IMapper::getService(), nullptr);
    setenv("STANDIN_HAL_PATH", folder.c_str(), 1);
}

TEST(MapperLookup, ARegisteredMapperIsFoundFirst) {
    ASSERT_EQ((sp<IMapper>(new FakeMapper(kRegistered))->registerAsService()), OK);
    EXPECT_EQ(MarkOf(IMapper::getService()), kRegistered);
    EXPECT_EQ(MarkOf(IMapper::getService(true)), kVendors);
    host::unregisterMapper();
    EXPECT_EQ(MarkOf(IMapper::getService()), kVendors);
    EXPECT_NE((sp<IMapper>(new FakeMapper(kRegistered))->registerAsService("")), OK);
}

}  // namespace
