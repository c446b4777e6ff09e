// Source files: what is read of them, and each way in which one is wrong.

#include "tests/host/libhidlbase/open_descriptors.h"
#include "tests/support/client_fixture.h"

using ::testing::StartsWith;

namespace test {
namespace {

const std::string kNv12File = "offlinecameratest/mmf_fd.yuv";
const std::string kYuvPath = "/data/vendor/camera/" + kNv12File;
const std::string kRawPath = std::string("/data/vendor/camera/") + kRawFile;
const char kMetadataFile[] = "metadata/original_dump.bin";

// Bytes that differ from their neighbours in every direction.
std::string Pattern(size_t bytes) {
    std::string pattern(bytes, '\0');
    for (size_t i = 0; i < bytes; ++i) pattern[i] = static_cast<char>(1 + i % 251);
    return pattern;
}

const std::string kMetadataRead = "I LoadOffineInputMetadata: read meta from dump bin, bin size: ";

class SourceLoading : public ::testing::Test {
  public:
    ~SourceLoading() override { EXPECT_EQ(CountOpenDescriptors(), descriptors); }

    int32_t LoadYuv(uint32_t width, uint32_t height) {
        return OfflineCameraClient::LoadOffineSourceYUVFrame(kYuvPath.c_str(), buffer.data(), width,
                                                             height);
    }
    int32_t LoadRaw(int32_t stride, int32_t scanline) {
        return OfflineCameraClient::LoadOffineSourceRawFrame(buffer.data(), stride, scanline);
    }
    // What the loader makes of metadata that is {9} before.
    std::vector<uint8_t> LoadMetadata() {
        std::vector<uint8_t> metadata{9};
        OfflineCameraClient::LoadOffineInputMetadata(&metadata);
        return metadata;
    }

    LogCapture log;
    DataFolder data;
    const int descriptors = CountOpenDescriptors();
    std::string buffer = std::string(256, '\0');
};

const std::string kYuv = "LoadOffineSourceYUVFrame: ";
const std::string kRaw = "LoadOffineSourceRawFrame: ";
const std::string kYuvOpen = "I " + kYuv + "open input file " + kYuvPath;
const std::string kRawOpen = "I " + kRaw + "open input file " + kRawPath;

TEST_F(SourceLoading, ReadsNv12WithHalfOfAnOddHeightRoundedDown) {
    const std::string file = Pattern(6 * 5 + 6 * 2 + 10);
    data.Write(kNv12File, file);
    EXPECT_EQ(LoadYuv(6, 5), 0);
    EXPECT_EQ(buffer, file.substr(0, 42) + std::string(256 - 42, '\0'));
    EXPECT_EQ(log.Take(),
              (Lines{kYuvOpen, "I " + kYuv + "f_wxf_h 6x5, stridexscanline 6x5, f_uv_off 30,"}));
}

TEST_F(SourceLoading, ReportsWhereNv12ComesShort) {
    const std::string geometry = "I " + kYuv + "f_wxf_h 8x4, stridexscanline 8x4, f_uv_off 32,";
    data.Write(kNv12File, Pattern(8 * 4 + 8 * 2 - 1));
    EXPECT_EQ(LoadYuv(8, 4), 1);
    EXPECT_EQ(log.Take(),
              (Lines{kYuvOpen, geometry, "E readSize 7 is not same as width 8, file position 40"}));

    data.Write(kNv12File, Pattern(3));
    EXPECT_EQ(LoadYuv(8, 4), 1);
    EXPECT_EQ(log.Take(), (Lines{kYuvOpen, geometry, "E readSize 3 is not same as width 8"}));
}

TEST_F(SourceLoading, ReadsRawRowsAndNothingBehindThem) {
    const std::string file = Pattern(5 * 10 + 20);
    data.Write(kRawFile, file);
    EXPECT_EQ(LoadRaw(10, 5), 0);
    EXPECT_EQ(buffer, file.substr(0, 50) + std::string(256 - 50, '\0'));
    EXPECT_EQ(LoadRaw(10, 8), 1);
    EXPECT_EQ(buffer.substr(0, 70), file);
    EXPECT_EQ(log.Take(),
              (Lines{kRawOpen, "I " + kRaw + "f_wxf_h 10x5, stridexscanline 10x5, f_off 0,",
                     kRawOpen, "I " + kRaw + "f_wxf_h 10x8, stridexscanline 10x8, f_off 0,",
                     "E readSize 0 is not same as width 10"}));
}

// As without plane layouts: the file must be there, but may be anything.
TEST_F(SourceLoading, OpensTheFileForNoRows) {
    data.Write(kNv12File, "");
    data.Write(kRawFile, "");
    EXPECT_EQ(LoadYuv(640, 0), 0);
    EXPECT_EQ(LoadRaw(5120, 0), 0);
    EXPECT_EQ(log.Take(),
              (Lines{kYuvOpen, "I " + kYuv + "f_wxf_h 640x0, stridexscanline 640x0, f_uv_off 0,",
                     kRawOpen, "I " + kRaw + "f_wxf_h 5120x0, stridexscanline 5120x0, f_off 0,"}));
}

TEST_F(SourceLoading, ReportsMissingFrames) {
    EXPECT_EQ(LoadYuv(8, 4), 5);
    EXPECT_EQ(LoadRaw(10, 5), 5);
    const std::string reason = ",error code No such file or directory";
    EXPECT_EQ(log.Take(), (Lines{kYuvOpen, "E " + kYuv + "fopen failed " + kYuvPath + reason,  //
                                 kRawOpen, "E " + kRaw + "fopen failed " + kRawPath + reason}));
}

TEST_F(SourceLoading, LeavesMetadataAloneWithoutADump) {
    EXPECT_THAT(LoadMetadata(), ElementsAre(9));
    EXPECT_EQ(log.Take(), (Lines{"I allocate input metadata (nil)"}));

    data.Write(kMetadataFile, "abcd");
    data.FailStat();
    EXPECT_THAT(LoadMetadata(), ElementsAre(9));
    EXPECT_EQ(log.Take(), (Lines{kMetadataRead + "0.", "I allocate input metadata (nil)"}));
}

TEST_F(SourceLoading, TakesAsMuchMetadataAsTheDumpsFirstWordSays) {
    using namespace std::string_literals;
    const auto load = [this](const std::string& dump) {
        data.Write(kMetadataFile, dump);
        const std::vector<uint8_t> metadata = LoadMetadata();
        EXPECT_THAT(log.Take(), ElementsAre(kMetadataRead + std::to_string(dump.size()) + ".",
                                            StartsWith("I allocate input metadata 0x")));
        return std::string(metadata.begin(), metadata.end());
    };
    EXPECT_EQ(load("\x06\0\0\0XYZ"s), "\x06\0\0\0XY"s);
    EXPECT_EQ(load("\x07\0\0\0XYZ"s), "\x07\0\0\0XYZ"s);
    EXPECT_EQ(load("\x0a\0\0\0XYZ"s), "\x0a\0\0\0XYZ\0\0\0"s);  // nothing but zeroes is made up
    EXPECT_EQ(load("\0\0\0\0XYZ"s), "");
    EXPECT_EQ(load("\x05"s), "\x05\0\0\0\0"s);
    EXPECT_EQ(load(""), "");
}

}  // namespace
}  // namespace test
