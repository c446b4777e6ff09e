// Names of dumps and source files.
#include "fuzz_input.h"
#include "host/tools/offlineframes/dump_name.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string path(reinterpret_cast<const char*>(data), size);
    if (const auto name = offlineframes::parseDumpName(path)) {
        require(name->stride != 0u && name->scanlines != 0u);
        require(name->width != 0u && name->height != 0u);
    }
    offlineframes::sourceFileGeometry(path);
    return 0;
}
