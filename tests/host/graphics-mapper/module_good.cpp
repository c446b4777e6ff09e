// An implementation library that makes mappers.
#include "tests/host/graphics-mapper/fake_mapper.h"

extern "C" fake::IMapper* HIDL_FETCH_IMapper(const char* name) {
    return new fake::FakeMapper(std::string(name) == "default" ? fake::Error::NO_RESOURCES
                                                               : fake::Error::BAD_VALUE);
}
