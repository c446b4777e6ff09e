// Metadata blobs: what passes the check never leads outside of its block.
#include <system/camera_metadata.h>

#include "fuzz_input.h"
#include "host/services/offlinecamera/camera_metadata_blob.h"

namespace {

// Reads every byte of an entry.
void ReadAll(const camera_metadata_ro_entry_t& entry) {
    const volatile uint8_t* const bytes = entry.data.u8;
    for (size_t i = 0; i < entry.count * camera_metadata_type_size[entry.type]; ++i) bytes[i];
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::vector<uint8_t> blob(data, data + size);
    if (offlinecamera::CheckMetadataBlob(blob).Ok()) offlinecamera::FindJpegOrientation(blob);

    // The vector's bytes are aligned as a block must be, and end where the input ends.
    const auto* block = reinterpret_cast<const camera_metadata_t*>(blob.data());
    if (validate_camera_metadata_structure(block, &size) != 0) return 0;
    for (size_t i = 0; i < get_camera_metadata_entry_count(block); ++i) {
        camera_metadata_ro_entry_t entry;
        if (get_camera_metadata_ro_entry(block, i, &entry) != 0) continue;
        ReadAll(entry);
        if (find_camera_metadata_ro_entry(block, entry.tag, &entry) == 0) ReadAll(entry);
    }
    return 0;
}
