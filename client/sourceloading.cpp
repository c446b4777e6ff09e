// Reads source frames and metadata from their fixed files.

#include <sys/stat.h>
#include <system/camera_metadata.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "gralloc/clientlog.h"
#include "vexofflinecameraclient.h"

namespace vendor::zel::hardware::camera::offlinecamera::implementation {

const std::string kOfflineDataDirectory = "/data/vendor/camera/offlinecameratest/";

namespace {

constexpr char kRawFramePath[] = "/data/vendor/camera/offlinecameratest/4096_3072_RAW10.raw";
constexpr char kMetadataDumpPath[] = "/data/vendor/camera/metadata/original_dump.bin";

constexpr size_t kJpegMetadataEntries = 10;
constexpr size_t kJpegMetadataBytes = 80;

// Division by zero gives zero, as it does on the devices this tool runs on.
uint32_t RoundUp(uint32_t value, uint32_t alignment) {
    return alignment == 0 ? 0 : ((value + alignment - 1) / alignment) * alignment;
}

// One seek and one read, straight into the buffer; gives the bytes read.
size_t ReadRow(FILE* file, uint64_t position, char* row, uint32_t size) {
    fseek(file, static_cast<long>(position), SEEK_SET);
    return fread(row, 1, size, file);
}

FILE* OpenSource(const char* loader, const char* path) {
    CLIENT_LOGI("%s: open input file %s", loader, path);
    FILE* file = fopen(path, "rb");
    if (file == nullptr) {
        CLIENT_LOGE("%s: fopen failed %s,error code %s", loader, path, strerror(errno));
        return nullptr;
    }
    // Rows go straight into the graphics buffer, without a staging buffer in between.
    setvbuf(file, nullptr, _IONBF, 0);
    return file;
}

// Copies the blob that begins at `block`, whose size is the one recorded in it. What the block
// does not hold of it is zero.
void CopyRecordedSize(const uint8_t* block, size_t blockSize, std::vector<uint8_t>* metadata) {
    const size_t recorded =
            get_camera_metadata_size(reinterpret_cast<const camera_metadata_t*>(block));
    metadata->assign(block, block + std::min(recorded, blockSize));
    metadata->resize(recorded);
}

}  // namespace

int32_t OfflineCameraClient::LoadOffineSourceYUVFrame(const char* path, char* buffer,
                                                      uint32_t width, uint32_t height) {
    // Rounded up to themselves: what makes the buffer's layout equal the file's.
    const uint32_t stride = RoundUp(width, width);
    const uint32_t scanline = RoundUp(height, height);
    uint32_t uvFileOffset = width * height;
    FILE* file = OpenSource(__func__, path);
    if (file == nullptr) {
        return kOpenFailed;
    }
    CLIENT_LOGI("%s: f_wxf_h %dx%d, stridexscanline %dx%d, f_uv_off %d,", __func__, width, height,
                stride, scanline, uvFileOffset);

    const size_t chroma = static_cast<size_t>(stride) * scanline;
    for (uint32_t row = 0; row < height; ++row) {
        const size_t rowOffset = static_cast<size_t>(row) * stride;
        size_t readSize =
                ReadRow(file, static_cast<uint64_t>(row) * width, buffer + rowOffset, width);
        if (readSize != width) {
            CLIENT_LOGE("readSize %lld is not same as width %lld", static_cast<long long>(readSize),
                        static_cast<long long>(width));
            fclose(file);
            return kFailed;
        }
        if (row >= height / 2) {
            continue;
        }
        readSize = ReadRow(file, uvFileOffset, buffer + chroma + rowOffset, width);
        if (readSize != width) {
            CLIENT_LOGE("readSize %lld is not same as width %lld, file position %d",
                        static_cast<long long>(readSize), static_cast<long long>(width),
                        uvFileOffset);
            fclose(file);
            return kFailed;
        }
        uvFileOffset += width;
    }
    fclose(file);
    return kSuccess;
}

int32_t OfflineCameraClient::LoadOffineSourceRawFrame(char* buffer, int32_t stride,
                                                      int32_t scanline) {
    FILE* file = OpenSource(__func__, kRawFramePath);
    if (file == nullptr) {
        return kOpenFailed;
    }
    CLIENT_LOGI("%s: f_wxf_h %dx%d, stridexscanline %dx%d, f_off %d,", __func__, stride, scanline,
                stride, scanline, 0);
    const auto width = static_cast<uint32_t>(stride);
    for (int32_t row = 0; row < scanline; ++row) {
        const uint64_t offset = static_cast<uint64_t>(row) * width;
        const size_t readSize = ReadRow(file, offset, buffer + offset, width);
        if (readSize != width) {
            CLIENT_LOGE("readSize %lld is not same as width %lld", static_cast<long long>(readSize),
                        static_cast<long long>(stride));
            fclose(file);
            return kFailed;
        }
    }
    fclose(file);
    return kSuccess;
}

void OfflineCameraClient::LoadOffineInputMetadata(std::vector<uint8_t>* metadata) {
    uint8_t* block = nullptr;
    if (FILE* file = fopen(kMetadataDumpPath, "rb"); file != nullptr) {
        struct stat info {};
        uint32_t size = 0;
        if (stat(kMetadataDumpPath, &info) == 0) {
            size = static_cast<uint32_t>(info.st_size);
            // Zeroed, and never shorter than the size word that is looked at next.
            block = static_cast<uint8_t*>(calloc(1, std::max<size_t>(size, sizeof(uint32_t))));
            if (block != nullptr) {
                const size_t items = fread(block, size, 1, file);
                (void)items;  // a short file leaves zeroes behind
            }
        }
        CLIENT_LOGI("%s: read meta from dump bin, bin size: %d.", __func__, size);
        fclose(file);
        if (block != nullptr) {
            CopyRecordedSize(block, size, metadata);
        }
    }
    CLIENT_LOGI("allocate input metadata %p", static_cast<void*>(block));
    free(block);
}

void OfflineCameraClient::BuildJpegOrientationMetadata(std::vector<uint8_t>* metadata) {
    constexpr int32_t kOrientation = 90;
    camera_metadata_t* block = allocate_camera_metadata(kJpegMetadataEntries, kJpegMetadataBytes);
    add_camera_metadata_entry(block, ANDROID_JPEG_ORIENTATION, &kOrientation, 1);
    if (block != nullptr) {
        const auto* bytes = reinterpret_cast<const uint8_t*>(block);
        metadata->assign(bytes, bytes + get_camera_metadata_size(block));
    }
    free_camera_metadata(block);
}

}  // namespace vendor::zel::hardware::camera::offlinecamera::implementation
