// Reads source frames and metadata from their fixed files.

#include <sys/stat.h>
#include <system/camera_metadata.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "gralloc/clientlog.h"
#include "openfile.h"
#include "vexofflinecameraclient.h"

namespace vendor::zel::hardware::camera::offlinecamera::implementation {

namespace {

constexpr char kMetadataDumpPath[] = "/data/vendor/camera/metadata/original_dump.bin";

constexpr size_t kJpegMetadataEntries = 10;
constexpr size_t kJpegMetadataBytes = 80;

// 0 for an alignment of 0, as an integer division by zero is 0 on the devices' processors.
uint32_t RoundUp(uint32_t value, uint32_t alignment) {
    return alignment == 0 ? 0 : ((value + alignment - 1) / alignment) * alignment;
}

File OpenSource(const char* loader, const char* path) {
    CLIENT_LOGI("%s: open input file %s", loader, path);
    File file = OpenFile(path, "rb");
    if (file == nullptr) {
        CLIENT_LOGE("%s: fopen failed %s,error code %s", loader, path, strerror(errno));
    } else {
        // Rows go straight into the graphics buffer, not through the stream's own buffer.
        setvbuf(file.get(), nullptr, _IONBF, 0);
    }
    return file;
}

// Seeks to `position` and reads up to `size` bytes into `row`. Returns their number.
size_t ReadAt(FILE* file, uint64_t position, char* row, uint32_t size) {
    fseeko(file, static_cast<off_t>(position), SEEK_SET);
    return fread(row, 1, size, file);
}

// As above. False, with an error line, for a row that is cut short.
bool ReadRow(FILE* file, uint64_t position, char* row, uint32_t size) {
    const size_t readSize = ReadAt(file, position, row, size);
    if (readSize != size) {
        CLIENT_LOGE("readSize %lld is not same as width %lld", static_cast<long long>(readSize),
                    static_cast<long long>(size));
    }
    return readSize == size;
}

// Copies as many bytes as the blob at the start of `block` says it has. Bytes that `block` does not
// have are zero.
void CopyRecordedSize(const uint8_t* block, size_t blockSize, std::vector<uint8_t>* metadata) {
    const size_t recorded =
            get_camera_metadata_size(reinterpret_cast<const camera_metadata_t*>(block));
    metadata->assign(block, block + std::min(recorded, blockSize));
    metadata->resize(recorded);
}

}  // namespace

int32_t OfflineCameraClient::LoadOffineSourceYUVFrame(const char* path, char* buffer,
                                                      uint32_t width, uint32_t height) {
    // Both are rounded up to themselves, so the buffer is laid out like the file.
    const uint32_t stride = RoundUp(width, width);
    const uint32_t scanline = RoundUp(height, height);
    uint32_t uvFileOffset = width * height;
    const File file = OpenSource(__func__, path);
    if (file == nullptr) {
        return kOpenFailed;
    }
    CLIENT_LOGI("%s: f_wxf_h %dx%d, stridexscanline %dx%d, f_uv_off %d,", __func__, width, height,
                stride, scanline, uvFileOffset);

    const size_t chroma = static_cast<size_t>(stride) * scanline;
    for (uint32_t row = 0; row < height; ++row) {
        const size_t rowOffset = static_cast<size_t>(row) * stride;
        if (!ReadRow(file.get(), static_cast<uint64_t>(row) * width, buffer + rowOffset, width)) {
            return kFailed;
        }
        if (row >= height / 2) {
            continue;
        }
        const size_t readSize =
                ReadAt(file.get(), uvFileOffset, buffer + chroma + rowOffset, width);
        if (readSize != width) {
            CLIENT_LOGE("readSize %lld is not same as width %lld, file position %d",
                        static_cast<long long>(readSize), static_cast<long long>(width),
                        uvFileOffset);
            return kFailed;
        }
        uvFileOffset += width;
    }
    return kSuccess;
}

int32_t OfflineCameraClient::LoadOffineSourceRawFrame(char* buffer, int32_t stride,
                                                      int32_t scanline) {
    const std::string path = kOfflineDataDirectory + "4096_3072_RAW10.raw";
    const File file = OpenSource(__func__, path.c_str());
    if (file == nullptr) {
        return kOpenFailed;
    }
    CLIENT_LOGI("%s: f_wxf_h %dx%d, stridexscanline %dx%d, f_off %d,", __func__, stride, scanline,
                stride, scanline, 0);
    const auto width = static_cast<uint32_t>(stride);
    for (int32_t row = 0; row < scanline; ++row) {
        const uint64_t offset = static_cast<uint64_t>(row) * width;
        if (!ReadRow(file.get(), offset, buffer + offset, width)) {
            return kFailed;
        }
    }
    return kSuccess;
}

void OfflineCameraClient::LoadOffineInputMetadata(std::vector<uint8_t>* metadata) {
    uint8_t* block = nullptr;
    if (File file = OpenFile(kMetadataDumpPath, "rb"); file != nullptr) {
        struct stat info {};
        uint32_t size = 0;
        if (stat(kMetadataDumpPath, &info) == 0) {
            size = static_cast<uint32_t>(info.st_size);
            // At least as long as the size word that CopyRecordedSize reads; zeroed, as the file
            // may end early.
            block = static_cast<uint8_t*>(calloc(1, std::max<size_t>(size, sizeof(uint32_t))));
            if (block != nullptr) {
                const size_t items = fread(block, size, 1, file.get());
                (void)items;  // kept: not checked
            }
        }
        CLIENT_LOGI("%s: read meta from dump bin, bin size: %d.", __func__, size);
        file.reset();
        if (block != nullptr) {
            CopyRecordedSize(block, size, metadata);
        }
    }
    CLIENT_LOGI("allocate input metadata %p", static_cast<void*>(block));
    free(block);
}

void OfflineCameraClient::BuildJpegOrientationMetadata(std::vector<uint8_t>* metadata) {
    constexpr int32_t kOrientation = 90;
    camera_metadata_t* const block =
            allocate_camera_metadata(kJpegMetadataEntries, kJpegMetadataBytes);
    // Kept: before the test for null; a null block is refused.
    add_camera_metadata_entry(block, ANDROID_JPEG_ORIENTATION, &kOrientation, 1);
    if (block != nullptr) {
        const auto* bytes = reinterpret_cast<const uint8_t*>(block);
        metadata->assign(bytes, bytes + get_camera_metadata_size(block));
    }
    free_camera_metadata(block);
}

}  // namespace vendor::zel::hardware::camera::offlinecamera::implementation
