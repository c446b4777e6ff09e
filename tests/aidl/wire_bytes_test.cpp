// The bytes of the package's records, written down from the wire layout: everything little endian
// and padded to four bytes; a record is its size in bytes (with these four), then its fields; a
// record as a field or element is preceded by 1; a string is its count of UTF-16 units, the units
// and a NUL; an array is its length, then its elements.
#include <aidl/android/hardware/camera/device/NotifyMsg.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineBufferRequest.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineCaptureResult.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineRequestInfo.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineSessionConfigureInfo.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineStreamBufferRet.h>
#include <gtest/gtest.h>

#include "hex.h"
#include "tests/host/aidlc/parcels.h"

namespace aidl::vendor::zel::hardware::camera::offlinecamera {
namespace {

using namespace ::aidl::android::hardware::camera::device;
using ::aidl::android::hardware::camera::metadata::RequestAvailableDynamicRangeProfilesMap;
using ::aidl::android::hardware::camera::metadata::ScalerAvailableStreamUseCases;
using ::aidl::android::hardware::camera::metadata::SensorPixelMode;
using ::aidl::android::hardware::graphics::common::BufferUsage;
using ::aidl::android::hardware::graphics::common::Dataspace;
using ::aidl::android::hardware::graphics::common::PixelFormat;

Stream MakeStream() {
    return {3,
            StreamType::INPUT,
            4096,
            3072,
            PixelFormat::RAW10,
            BufferUsage::CAMERA_INPUT,
            Dataspace::JFIF,
            StreamRotation::ROTATION_90,
            "",
            5,
            -1,
            {SensorPixelMode::ANDROID_SENSOR_PIXEL_MODE_MAXIMUM_RESOLUTION},
            RequestAvailableDynamicRangeProfilesMap::
                    ANDROID_REQUEST_AVAILABLE_DYNAMIC_RANGE_PROFILES_MAP_STANDARD,
            ScalerAvailableStreamUseCases::ANDROID_SCALER_AVAILABLE_STREAM_USE_CASES_VENDOR_START,
            7};
}

const std::string kStream =
        "54000000 "           // 84 bytes
        "03000000 01000000 "  // id, INPUT
        "00100000 000c0000 "  // 4096 x 3072
        "25000000 "           // RAW10
        "00000400 00000000 "  // 1 << 18
        "0000c208 "           // 0x8c20000
        "01000000 "           // 90 degrees
        "00000000 00000000 "  // no camera id: no units, NUL and padding
        "05000000 ffffffff "  // buffer size, group
        "01000000 01000000 "  // one pixel mode
        "01000000 00000000 "  // STANDARD
        "00000100 00000000 "  // 0x10000
        "07000000 ";          // colour space

// Without descriptors, whose form belongs to the transport.
StreamBuffer MakeBuffer() {
    return {3, 0x0102030405060708, {{}, {-1}}, BufferStatus::ERROR, {}, {}};
}

const std::string kBuffer =
        "48000000 "                              // 72 bytes
        "03000000 "                              // stream
        "08070605 04030201 "                     // buffer id
        "01000000 "                              // the handle is there:
        "10000000 00000000 01000000 ffffffff "   //   16 bytes, no descriptor, one integer
        "01000000 "                              // ERROR
        "01000000 0c000000 00000000 00000000 "   // empty acquire fence
        "01000000 0c000000 00000000 00000000 ";  // empty release fence

OfflineFrameInfo MakeFrame() {
    OfflineFrameInfo frame{{}, 2, {0xca, 0xfe, 0x01}};
    frame.buffers.push_back(MakeBuffer());
    return frame;
}

// 4 + (4 + 4 + 72) + 4 + (4 + 4) = 96
const std::string kFrame = "60000000 01000000 01000000 " + kBuffer +
                           "02000000 "            // partial results
                           "03000000 cafe0100 ";  // three bytes and one of padding

const char* const kEmptyFrame = "10000000 00000000 00000000 00000000 ";

template <typename Record>
void ExpectBytes(const Record& record, const std::string& expected) {
    const Bytes bytes = BytesOf(record);
    EXPECT_EQ(ToHex(bytes) + " ", expected);

    const ndk::ScopedAParcel read = ParcelOf(bytes);
    Record received;
    ASSERT_EQ(received.readFromParcel(read.get()), STATUS_OK);
    EXPECT_EQ(received, record) << received.toString();
    EXPECT_EQ(AParcel_getDataPosition(read.get()), static_cast<int32_t>(bytes.size()));
}

TEST(WireBytesTest, EveryRecordOfThePackage) {
    // 4 + (4 + 8) + (4 + 4 + 84) + 4 + (4 + 4) = 120
    ExpectBytes(OfflineSessionConfigureInfo{"a\u20ac", {MakeStream()}, 3, {1, 2, 3, 4}},
                "78000000 "
                "02000000 6100ac20 00000000 "  // two units, NUL, padding
                "01000000 01000000 " +
                        kStream + "03000000 04000000 01020304 ");

    OfflineRequestInfo request;
    request.frameNumber = -1;
    request.inFrameInfos.push_back(MakeFrame());
    request.outputBuffers.push_back(MakeBuffer());
    request.metadata = {0xff};
    // 4 + 4 + (4 + 4 + 96) + (4 + 4 + 72) + 4 + (4 + 4) = 204
    ExpectBytes(request, "cc000000 ffffffff 01000000 01000000 " + kFrame + "01000000 01000000 " +
                                 kBuffer + "00000000 01000000 ff000000 ");

    // 4 + 4 + (4 + 96) + (4 + 16) = 128
    ExpectBytes(OfflineCaptureResult{9, MakeFrame(), {}},
                "80000000 09000000 01000000 " + kFrame + "01000000 " + kEmptyFrame);

    // 4 + (4 + 84) + 4 = 96
    ExpectBytes(OfflineBufferRequest{MakeStream(), 1},
                "60000000 01000000 " + kStream + "01000000 ");
}

TEST(WireBytesTest, UnionsHaveATagAndNoSize) {
    // 4 + (4 + 84) + (4 + 4 + 4) = 104; error is member 0, UNKNOWN_ERROR is 4
    ExpectBytes(OfflineStreamBufferRet{MakeStream(), {}},
                "68000000 01000000 " + kStream + "01000000 00000000 04000000 ");

    OfflineStreamBufferRet lent{MakeStream(), std::vector<StreamBuffer>(1)};
    lent.val.get<StreamBuffersVal::buffers>()[0] = MakeBuffer();
    // 4 + (4 + 84) + (4 + 4 + 4 + 4 + 72) = 180; buffers is member 1
    ExpectBytes(lent,
                "b4000000 01000000 " + kStream + "01000000 01000000 01000000 01000000 " + kBuffer);

    // member 1, there, 24 bytes; a long starts at any multiple of four
    ExpectBytes(NotifyMsg(ShutterMsg{1, 2, -2}),
                "01000000 01000000 18000000 01000000 02000000 00000000 feffffff ffffffff ");
}

}  // namespace
}  // namespace aidl::vendor::zel::hardware::camera::offlinecamera
