// Dumps: file names, numbers of bytes, and that a buffer is freed whatever goes wrong.

#include <csignal>
#include <cstring>

#include "tests/support/client_fixture.h"

namespace test {
namespace {

constexpr int32_t kStreamId = 6;

class OutputDump : public ClientTest {
  public:
    // The stream's request with one buffer, number 1, of so many bytes.
    native_handle* Prepare(int format, size_t bytes = 4096) {
        around.mapper->bufferBytes = bytes;
        int32_t stride = 0;
        native_handle* const handle = client.m_grallocWrapper->allocate(
                1, 1, PixelFormat::RAW10, BufferUsage::CPU_READ_OFTEN, &stride);
        client.m_allocatedHandles.insert(handle);
        client.m_captureRequests[kStreamId] = {0,
                                               {{1, handle, bytes, 4096, 3072}},
                                               static_cast<PixelFormat>(format),
                                               2,
                                               600,
                                               500,
                                               Dataspace::JFIF};
        memset(around.mapper->Memory(handle), 'x', bytes);
        client.m_streamConfigName = "2";
        around.calls.clear();
        log.Take();
        return handle;
    }

    void Dump(int64_t bufferId = 1) { client.DumpResultBuffer({kStreamId, bufferId}, 12); }
};

TEST_F(OutputDump, WritesTheBufferAndFreesIt) {
    native_handle* const handle = Prepare(35, 1000);
    const char* const memory = around.mapper->Memory(handle);
    const std::string name = "OfflineAidl_CameraId_2_Frame_12_B2Y_Stride[4096]_Scanline[3072].yuv";
    data.Write("offlinecameratest/" + name, std::string(5000, 'o'));
    Lines beforeWriting;
    log.AtLine("imageSize", [&] { beforeWriting = around.calls; });
    Dump();
    EXPECT_THAT(beforeWriting, ElementsAre("lock 2"));
    EXPECT_THAT(data.Dumps(), ElementsAre(name));
    EXPECT_EQ(data.Read("offlinecameratest/" + name), std::string(1000, 'x'));
    EXPECT_THAT(around.calls, ElementsAre("lock 2", "unlock", "freeBuffer"));
    EXPECT_EQ(log.Take(),
              (Lines{Format("I result completed importedBuf %p", handle),
                     Format("I result completed buffer %p", memory),
                     "I imageSize 0 bufferSize  1000", Format("I freeBuffer %p", handle)}));
    client.freeBuffer(handle);
    EXPECT_THAT(log.Take(), IsEmpty());
}

TEST_F(OutputDump, NamesModesAndFormats) {
    const struct {
        int32_t opMode;
        int format;
        const char* rest;
    } cases[] = {{0, 37, "_B2Y_Stride[4096]_Scanline[3072].raw"},
                 {1, 33, "_Y2J_Width[600]_Height[500].jpg"},
                 {2, 35, "_Y2Y_Stride[4096]_Scanline[3072].yuv"},
                 {3, 35, "_MMF_Stride[4096]_Scanline[3072].yuv"},
                 {4, 35, "_QLL_Stride[4096]_Scanline[3072].yuv"},
                 {5, 36, "_R2R_Stride[4096]_Scanline[3072].unknown"},
                 {6, 36, ".unknown_Stride[4096]_Scanline[3072].unknown"}};
    Lines errors;
    for (const auto& dump : cases) {
        const DataFolder fresh;
        client.m_opMode = dump.opMode;
        Prepare(dump.format, 1200000);
        Dump();
        EXPECT_THAT(fresh.Dumps(),
                    ElementsAre("OfflineAidl_CameraId_2_Frame_12" + std::string(dump.rest)));
        for (const std::string& line : log.Take()) {
            if (line[0] == 'E') errors.push_back(line);
        }
    }
    EXPECT_THAT(errors, ElementsAre("E Unsupported format: 36", "E Unsupported mode: 6",
                                    "E Unsupported format: 36"));
}

// A frame of 600 x 500: the trailer ends at 600,000 bytes.
TEST_F(OutputDump, WritesAsMuchAsTheTrailerOfAJpegAllows) {
    const struct {
        int32_t size;  // as its trailer says
        Dataspace dataSpace;
        uint32_t written;
    } cases[] = {{262152, Dataspace::JFIF, 262152},
                 {262151, Dataspace::JFIF, 1200000},
                 {-1, Dataspace::JFIF, 1200000},
                 {262151, Dataspace::UNKNOWN, 200000},
                 {300000, Dataspace::UNKNOWN, 300000},
                 {700000, Dataspace::UNKNOWN, 700000}};  // more than the span of 600000
    for (const auto& jpeg : cases) {
        const DataFolder fresh;
        native_handle* const handle = Prepare(33, 1200000);
        client.m_captureRequests[kStreamId].dataSpace = jpeg.dataSpace;
        const int32_t trailer[] = {0xFF, jpeg.size};
        memcpy(around.mapper->Memory(handle) + 600000 - 8, trailer, sizeof(trailer));
        const std::string expected(around.mapper->Memory(handle), jpeg.written);
        Dump();
        EXPECT_TRUE(fresh.Read("offlinecameratest/" + fresh.Dumps().at(0)) == expected);
        const Lines lines = log.Take();
        EXPECT_EQ(lines.at(2),
                  Format("I blob structure info Id 255, JPEGBlobSize %d, bufSize 600000, "
                         "imageSize %u, kMinJpegSize 262152",
                         jpeg.size, jpeg.written));
        EXPECT_EQ(lines.at(3), Format("I imageSize %u bufferSize  1200000", jpeg.written));
    }
}

TEST_F(OutputDump, FreesWhatItCannotWrite) {
    native_handle* handle = Prepare(35);
    data.Remove();
    Dump();
    EXPECT_THAT(around.calls, ElementsAre("lock 2", "unlock", "freeBuffer"));
    EXPECT_EQ(log.Take().at(2), "E WaitCaptureResultCompleted: store fp failed");

    const DataFolder fresh;
    handle = Prepare(35);
    around.mapper->errors["lock"] = fake::Error::BAD_VALUE;
    Dump();
    EXPECT_THAT(fresh.Dumps(), IsEmpty());
    EXPECT_THAT(around.calls, ElementsAre("lock 2", "freeBuffer"));
    EXPECT_EQ(log.Take(),
              (Lines{Format("I result completed importedBuf %p", handle),
                     Format("E Failed to lock buffer %p: 3", handle),
                     "I result completed buffer (nil)", Format("I freeBuffer %p", handle)}));
}

TEST_F(OutputDump, LooksForTheBufferByItsWholeId) {
    Prepare(35);
    Dump(2);
    Dump(1 + (int64_t{1} << 32));
    client.DumpResultBuffer({77, 1}, 12);
    EXPECT_THAT(around.calls, IsEmpty());
    EXPECT_THAT(log.Take(), IsEmpty());
    EXPECT_EQ(client.m_captureRequests.count(77), 1u);
    EXPECT_THAT(client.m_captureRequests[77].buffers, IsEmpty());
}

TEST_F(OutputDump, DiesOfAFrameBeyond31Bits) {
    Prepare(33);
    client.m_captureRequests[kStreamId].width = 32768;
    client.m_captureRequests[kStreamId].height = 32768;
    EXPECT_EXIT(Dump(), ::testing::KilledBySignal(SIGABRT), "");
}

}  // namespace
}  // namespace test
