// What loading a source file row by row costs, as the tool does it, beside one read() of it all.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "buffer.h"
#include "client/vexofflinecameraclient.h"
#include "device.h"
#include "measure.h"
#include "table.h"

namespace vendor::zel::hardware::camera::offlinecamera::implementation {

/** Reaches the tool's own loaders. */
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

namespace {

using Loader =
        vendor::zel::hardware::camera::offlinecamera::implementation::OfflineCameraClientAccess;

constexpr int kRounds = 21;

void Require(bool done, const char* what) {
    if (done) return;
    fprintf(stderr, "loading_bench: cannot load %s\n", what);
    exit(1);
}

void ReadAtOnce(const std::string& path, bench::Buffer& buffer) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    size_t done = 0;
    ssize_t got = 1;
    while (got > 0 && done < buffer.Layout().size) {
        got = read(file, buffer.Data() + done, buffer.Layout().size - done);
        if (got > 0) done += static_cast<size_t>(got);
    }
    close(file);
    Require(done == buffer.Layout().size, path.c_str());
}

template <class LoadRows>
void Measure(const char* title, const std::string& path, bench::Buffer& buffer,
             const LoadRows& loadRows) {
    const auto renew = [&] { buffer.MakeFresh(); };
    const std::vector<bench::Subject> subjects = {
            {"one read()", [&] { ReadAtOnce(path, buffer); }, renew},
            {"the tool's loader", [&] { Require(loadRows() == 0, path.c_str()); }, renew},
    };
    bench::PrintComparison(title, subjects, MedianTimes(subjects, kRounds), 0, {0, 1.3});
}

}  // namespace

int main() {
    bench::GoIntoDevice();
    printf("## Loading sources into fresh graphics buffers\n\n");
    const std::string folder = bench::kDataFolder;
    bench::Buffer raw(bench::Raw10Buffer(4096, 3072));
    Measure("RAW10 4096 x 3072, row by row", folder + "4096_3072_RAW10.raw", raw, [&] {
        return Loader::LoadRaw(reinterpret_cast<char*>(raw.Data()), raw.Layout().stride, 3072);
    });
    bench::Buffer yuv(bench::Nv12Buffer(4000, 3000));
    const std::string yuvPath = folder + "4000_3000_NV12.yuv";
    Measure("NV12 4000 x 3000, row by row", yuvPath, yuv, [&] {
        return Loader::LoadYuv(yuvPath.c_str(), reinterpret_cast<char*>(yuv.Data()),
                               yuv.Layout().stride, 3072);
    });
}
