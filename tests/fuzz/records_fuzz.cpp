// Records of the packages read from arbitrary parcels; what can be read is written back, read again
// and written again, with the same bytes.
#include <aidl/android/hardware/camera/device/BufferCache.h>
#include <aidl/android/hardware/camera/device/BufferRequest.h>
#include <aidl/android/hardware/camera/device/CameraBlob.h>
#include <aidl/android/hardware/camera/device/CaptureResult.h>
#include <aidl/android/hardware/camera/device/NotifyMsg.h>
#include <aidl/android/hardware/camera/device/StreamBufferRet.h>
#include <aidl/android/hardware/camera/device/StreamConfiguration.h>
#include <aidl/android/hardware/graphics/allocator/AllocationResult.h>
#include <aidl/android/hardware/graphics/allocator/BufferDescriptorInfo.h>
#include <aidl/android/hardware/graphics/common/Cta861_3.h>
#include <aidl/android/hardware/graphics/common/PlaneLayout.h>
#include <aidl/android/hardware/graphics/common/Smpte2086.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineBufferRequest.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineCaptureResult.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineRequestInfo.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineSessionConfigureInfo.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineStreamBufferRet.h>

#include "fuzz_parcel.h"

namespace {

using namespace ::aidl::android::hardware::camera::device;
using namespace ::aidl::android::hardware::graphics::allocator;
using namespace ::aidl::android::hardware::graphics::common;
using namespace ::aidl::vendor::zel::hardware::camera::offlinecamera;

template <typename Record>
void readAndWrite(const AParcel* input) {
    input->setPosition(0);
    Record record;
    if (record.readFromParcel(input) != STATUS_OK) return;
    record.toString();
    AParcel first;
    require(record.writeToParcel(&first) == STATUS_OK);
    first.setPosition(0);
    Record again;
    require(again.readFromParcel(&first) == STATUS_OK && first.position() == first.size());
    AParcel second;
    require(again.writeToParcel(&second) == STATUS_OK);
    require(first.size() == second.size() &&
            (first.size() == 0 || memcmp(first.data(), second.data(), first.size()) == 0));
    require(first.objects().size() == second.objects().size());
}

template <typename... Records>
void readAs(unsigned which, const AParcel* parcel) {
    void (*const all[])(const AParcel*) = {readAndWrite<Records>...};
    all[which % sizeof...(Records)](parcel);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput input(data, size);
    const auto which = input.take<uint8_t>();
    {
        AParcel parcel;
        fillParcel(&parcel, input, {});
        // The seeds know the order of these: new ones go to the end.
        readAs<OfflineRequestInfo, OfflineSessionConfigureInfo, OfflineCaptureResult,
               OfflineBufferRequest, OfflineStreamBufferRet, OfflineFrameInfo, NotifyMsg,
               CaptureResult, StreamBufferRet, StreamBuffersVal, StreamConfiguration, Stream,
               StreamBuffer, BufferCache, BufferRequest, CameraBlob, CameraMetadata, ErrorMsg,
               ShutterMsg, PhysicalCameraMetadata, AllocationResult, BufferDescriptorInfo,
               PlaneLayout, Smpte2086, Cta861_3, ExtendableType>(which, &parcel);
    }
    requireNoDescriptorLeak();
    return 0;
}
