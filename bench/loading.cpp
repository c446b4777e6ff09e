// What loading a source file row by row costs the tool, beside one lseek and one read a row.
#include <fcntl.h>
#include <unistd.h>

#include "bench.h"
#include "client/vexofflinecameraclient.h"
#include "frames.h"

namespace vendor::zel::hardware::camera::offlinecamera::implementation {

// Reaches the tool's own loaders.
struct OfflineCameraClientAccess {
    static int32_t LoadRaw(char* buffer, uint32_t strideBytes, uint32_t rows) {
        return OfflineCameraClient::LoadOffineSourceRawFrame(
                buffer, static_cast<int32_t>(strideBytes), static_cast<int32_t>(rows));
    }
    static int32_t LoadYuv(const char* path, char* buffer, uint32_t strideBytes, uint32_t rows) {
        return OfflineCameraClient::LoadOffineSourceYUVFrame(path, buffer, strideBytes, rows);
    }
};

}  // namespace vendor::zel::hardware::camera::offlinecamera::implementation

namespace bench {
namespace {

using Loader =
        vendor::zel::hardware::camera::offlinecamera::implementation::OfflineCameraClientAccess;

void ReadRows(const std::string& path, Buffer& buffer) {
    const size_t stride = buffer.Layout().stride;
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    for (size_t at = 0; at < buffer.Layout().size; at += stride) {
        Require(lseek(file, static_cast<off_t>(at), SEEK_SET) >= 0 &&
                        read(file, buffer.Data() + at, stride) == static_cast<ssize_t>(stride),
                "load " + path);
    }
    close(file);
}

template <class LoadRows>
void CompareLoaders(const char* title, const std::string& path, Buffer& buffer,
                    const LoadRows& loadRows) {
    const auto renew = [&] { buffer.MakeFresh(); };
    Compare(title, {{"one lseek and one read a row", [&] { ReadRows(path, buffer); }, renew},
                    {"the tool's loader", [&] { Require(loadRows() == 0, "load " + path); }, renew,
                     1.15}});
}

}  // namespace

void MeasureLoading() {
    const std::string folder = kFrameFolder;
    Buffer raw(Describe(graphics::kFormatRaw10, 4096, 3072));
    CompareLoaders("RAW10 4096 x 3072, row by row", folder + "4096_3072_RAW10.raw", raw, [&] {
        return Loader::LoadRaw(reinterpret_cast<char*>(raw.Data()), raw.Layout().stride, 3072);
    });
    Buffer yuv(Describe(graphics::kFormatYcbcr420, 4000, 3000));
    const std::string yuvPath = folder + "4000_3000_NV12.yuv";
    CompareLoaders("NV12 4000 x 3000, row by row", yuvPath, yuv, [&] {
        return Loader::LoadYuv(yuvPath.c_str(), reinterpret_cast<char*>(yuv.Data()),
                               yuv.Layout().stride, 3072);
    });
}

}  // namespace bench
