// Metadata blobs: what passes the check never leads outside of its block, also while it is edited.
#include <system/camera_metadata.h>

#include <memory>
#include <vector>

#include "fuzz_input.h"
#include "host/services/offlinecamera/camera_metadata_blob.h"

namespace {

struct Freed {
    void operator()(camera_metadata_t* block) const { free_camera_metadata(block); }
};
using Block = std::unique_ptr<camera_metadata_t, Freed>;

// Reads every byte of an entry.
unsigned readAll(const camera_metadata_ro_entry_t& entry) {
    unsigned sum = 0;
    const size_t bytes = entry.count * camera_metadata_type_size[entry.type];
    for (size_t i = 0; i < bytes; ++i) sum += entry.data.u8[i];
    return sum;
}

unsigned readEntries(const camera_metadata_t* block) {
    unsigned sum = 0;
    for (size_t i = 0; i < get_camera_metadata_entry_count(block); ++i) {
        camera_metadata_ro_entry_t entry;
        if (get_camera_metadata_ro_entry(block, i, &entry) != 0) continue;
        sum += readAll(entry);
        camera_metadata_ro_entry_t found;
        if (find_camera_metadata_ro_entry(block, entry.tag, &found) == 0) sum += readAll(found);
    }
    return sum;
}

// Edits that the input's last bytes choose.
void edit(camera_metadata_t* block, FuzzInput choice) {
    const uint64_t values[8] = {choice.take<uint64_t>()};
    const size_t count = get_camera_metadata_entry_count(block);
    if (count > 0) {
        update_camera_metadata_entry(block, values[0] % count, values, values[0] % 3, nullptr);
        delete_camera_metadata_entry(block, values[0] / 7 % count);
    }
    sort_camera_metadata(block);
    add_camera_metadata_entry(block, ANDROID_JPEG_ORIENTATION, values, 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::vector<uint8_t> blob(data, data + size);
    if (offlinecamera::CheckMetadataBlob(blob).empty()) offlinecamera::FindJpegOrientation(blob);

    const Block block(allocate_copy_camera_metadata_checked(
            reinterpret_cast<const camera_metadata_t*>(data), size));
    if (block == nullptr) return 0;
    readEntries(block.get());
    const Block copy(clone_camera_metadata(block.get()));
    require(copy != nullptr);
    require(validate_camera_metadata_structure(copy.get(), nullptr) == 0);
    const Block joined(allocate_camera_metadata(64, 4096));
    append_camera_metadata(joined.get(), block.get());
    append_camera_metadata(joined.get(), copy.get());
    for (camera_metadata_t* edited : {block.get(), joined.get()}) {
        edit(edited, FuzzInput(data + size - size % 8, size % 8));
        readEntries(edited);
    }
    return 0;
}
