// A walk through the markers of a JPEG file.

#include "tests/end_to_end/jpeg_fields.h"

#include <cstring>

namespace end_to_end {
namespace {

constexpr int kStart = 0xD8, kEnd = 0xD9, kScan = 0xDA, kFirstRestart = 0xD0, kLastRestart = 0xD7;
constexpr int kBaselineFrame = 0xC0, kFirstApp = 0xE0, kSecondApp = 0xE1;
constexpr int kOrientationTag = 0x0112, kShort = 3;

// Numbers of one or more bytes by position; what lies outside is 0 and remembered.
class Reader {
  public:
    Reader(const std::string& bytes, size_t begin, size_t end)
        : m_bytes(bytes), m_begin(begin), m_end(end) {}

    int number(size_t at, size_t count, bool littleEndian = false) {
        int value = 0;
        for (size_t i = 0; i < count; ++i) {
            const size_t place = m_begin + at + (littleEndian ? count - 1 - i : i);
            if (place >= m_end) failed = true;
            value = value * 256 + (place < m_end ? static_cast<unsigned char>(m_bytes[place]) : 0);
        }
        return value;
    }
    bool startsWith(const char* word, size_t length) const {
        return m_end - m_begin >= length && memcmp(&m_bytes[m_begin], word, length) == 0;
    }

    bool failed = false;

  private:
    const std::string& m_bytes;
    const size_t m_begin, m_end;
};

void readJfif(Reader reader, JpegFields* fields) {
    if (!reader.startsWith("JFIF\0", 5)) return;
    fields->jfifMajor = reader.number(5, 1);
    fields->thumbnailPixels = reader.number(12, 1) * reader.number(13, 1);
}

void readExif(Reader reader, JpegFields* fields) {
    constexpr size_t kTiff = 6;  // after the identifier
    if (!reader.startsWith("Exif\0\0", kTiff)) return;
    const bool little = reader.number(kTiff, 2) == 0x4949;
    if (reader.number(kTiff + 2, 2, little) != 42) fields->problem = "EXIF without TIFF header";
    const size_t directory = kTiff + static_cast<size_t>(reader.number(kTiff + 4, 4, little));
    const int entries = reader.number(directory, 2, little);
    for (int i = 0; i < entries && !reader.failed; ++i) {
        const size_t entry = directory + 2 + static_cast<size_t>(i) * 12;
        if (reader.number(entry, 2, little) != kOrientationTag) continue;
        const bool oneShort = reader.number(entry + 2, 2, little) == kShort &&
                              reader.number(entry + 4, 4, little) == 1;
        fields->orientation = oneShort ? reader.number(entry + 8, 2, little) : -1;
    }
    if (reader.failed) fields->problem = "the EXIF directory leaves its segment";
}

void readFrame(Reader reader, JpegFields* fields) {
    fields->height = reader.number(1, 2);
    fields->width = reader.number(3, 2);
    const int components = reader.number(5, 1);
    for (int i = 0; i < components && !reader.failed; ++i) {
        fields->samplings.push_back(reader.number(6 + static_cast<size_t>(i) * 3 + 1, 1));
    }
    if (reader.failed) fields->problem = "the frame header is cut off";
}

// From the scan's coded bytes to the marker after them, which has to be the end of the file.
std::string walkScan(const std::string& file, size_t at) {
    int nextRestart = kFirstRestart;
    for (; at + 1 < file.size(); ++at) {
        const int code = static_cast<unsigned char>(file[at + 1]);
        if (file[at] != '\xFF' || code == 0) continue;
        if (code == kEnd) return at + 2 == file.size() ? "" : "bytes after the end marker";
        if (code != nextRestart) return "an unexpected marker in the scan";
        nextRestart = code == kLastRestart ? kFirstRestart : code + 1;
    }
    return "no end marker";
}

}  // namespace

JpegFields readJpegFields(const std::string& file) {
    JpegFields fields;
    Reader all(file, 0, file.size());
    if (all.number(0, 2) != 0xFF00 + kStart) return {"no start marker"};
    for (size_t at = 2; fields.problem.empty();) {
        const int marker = all.number(at, 2) - 0xFF00;
        const size_t length = static_cast<size_t>(all.number(at + 2, 2));
        const size_t next = at + 2 + length;
        if (marker <= 0 || length < 2 || next > file.size()) return {"broken segments"};
        const Reader segment(file, at + 4, next);
        if (marker == kFirstApp && at == 2) readJfif(segment, &fields);
        if (marker == kSecondApp) readExif(segment, &fields);
        if (marker == kBaselineFrame) readFrame(segment, &fields);
        at = next;
        if (marker == kScan) {
            fields.problem = walkScan(file, at);
            break;
        }
    }
    return fields;
}

}  // namespace end_to_end
