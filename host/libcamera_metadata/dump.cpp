// A listing of a metadata block for people.
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <string>

#include "layout.h"

using namespace host::metadata;

namespace {

constexpr size_t kShortListing = 16;  // values of an entry at verbosity 1

std::string formatValue(const camera_metadata_ro_entry_t& entry, size_t index) {
    char text[64] = "";
    switch (entry.type) {
        case TYPE_BYTE:
            std::snprintf(text, sizeof(text), "%u", entry.data.u8[index]);
            break;
        case TYPE_INT32:
            std::snprintf(text, sizeof(text), "%" PRId32, entry.data.i32[index]);
            break;
        case TYPE_FLOAT:
            std::snprintf(text, sizeof(text), "%g", static_cast<double>(entry.data.f[index]));
            break;
        case TYPE_INT64:
            std::snprintf(text, sizeof(text), "%" PRId64, entry.data.i64[index]);
            break;
        case TYPE_DOUBLE:
            std::snprintf(text, sizeof(text), "%.17g", entry.data.d[index]);
            break;
        case TYPE_RATIONAL:
            std::snprintf(text, sizeof(text), "%" PRId32 "/%" PRId32, entry.data.r[index].numerator,
                          entry.data.r[index].denominator);
            break;
    }
    return text;
}

std::string formatValues(const camera_metadata_ro_entry_t& entry, int verbosity) {
    const size_t shown = verbosity > 1 ? entry.count : std::min(entry.count, kShortListing);
    std::string text = " =";
    for (size_t i = 0; i < shown; ++i) text += " " + formatValue(entry, i);
    if (shown < entry.count) text += " ... (" + std::to_string(entry.count - shown) + " more)";
    return text;
}

std::string formatEntry(const camera_metadata_ro_entry_t& entry, int verbosity) {
    const char* section = get_camera_metadata_section_name(entry.tag);
    const char* name = get_camera_metadata_tag_name(entry.tag);
    char head[128];
    std::snprintf(head, sizeof(head), "%s.%s (0x%08x): %s[%zu]",
                  section != nullptr ? section : "unknown", name != nullptr ? name : "unknown",
                  entry.tag, camera_metadata_type_names[entry.type], entry.count);
    std::string text = head;
    if (verbosity > 0) text += formatValues(entry, verbosity);
    return text + "\n";
}

void writeAll(int fd, const std::string& text) {
    size_t done = 0;
    while (done < text.size()) {
        const ssize_t written = write(fd, text.data() + done, text.size() - done);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return;  // nobody to tell
        done += static_cast<size_t>(written);
    }
}

}  // namespace

void dump_camera_metadata(const camera_metadata_t* metadata, int fd, int verbosity) {
    dump_indented_camera_metadata(metadata, fd, verbosity, 0);
}

void dump_indented_camera_metadata(const camera_metadata_t* metadata, int fd, int verbosity,
                                   int indentation) {
    const std::string indent(static_cast<size_t>(std::max(indentation, 0)), ' ');
    if (metadata == nullptr) {
        writeAll(fd, indent + "camera metadata: none\n");
        return;
    }
    char head[160];
    std::snprintf(head, sizeof(head),
                  "camera metadata: %u of %u entries, %u of %u bytes of data, version %u%s\n",
                  metadata->entry_count, metadata->entry_capacity, metadata->data_count,
                  metadata->data_capacity, metadata->version,
                  (metadata->flags & kFlagSorted) ? ", sorted" : "");
    std::string text = indent + head;
    for (uint32_t i = 0; i < metadata->entry_count; ++i) {
        camera_metadata_ro_entry_t entry;
        text += indent + "  ";
        text += get_camera_metadata_ro_entry(metadata, i, &entry) == kOk
                        ? formatEntry(entry, verbosity)
                        : "entry " + std::to_string(i) + ": unknown type\n";
    }
    writeAll(fd, text);
}
