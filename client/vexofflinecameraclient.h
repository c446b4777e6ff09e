// The process-wide client of the offline camera service: one class, whose operations are the steps
// of a run. Each group below lies in the source file that it names.
#pragma once

#include <aidl/android/hardware/camera/device/NotifyMsg.h>
#include <aidl/android/hardware/camera/device/Stream.h>
#include <aidl/android/hardware/camera/device/StreamBuffer.h>
#include <aidl/android/hardware/camera/device/StreamRotation.h>
#include <aidl/android/hardware/camera/device/StreamType.h>
#include <aidl/android/hardware/camera/metadata/RequestAvailableDynamicRangeProfilesMap.h>
#include <aidl/android/hardware/camera/metadata/ScalerAvailableStreamUseCases.h>
#include <aidl/android/hardware/camera/metadata/SensorPixelMode.h>
#include <aidl/android/hardware/graphics/common/BufferUsage.h>
#include <aidl/android/hardware/graphics/common/Dataspace.h>
#include <aidl/android/hardware/graphics/common/PixelFormat.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/IOfflineCameraService.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/IOfflineCameraSession.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineFrameInfo.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineRequestInfo.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineSessionConfigureInfo.h>

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "clientrecords.h"
#include "gralloc/offlinecameragrallocwrapper.h"
#include "gralloc/offlinecamerazelinterface.h"

namespace vendor::zel::hardware::camera::offlinecamera::implementation {

using ::aidl::android::hardware::camera::device::NotifyMsg;
using ::aidl::android::hardware::camera::device::Stream;
using ::aidl::android::hardware::camera::device::StreamBuffer;
using ::aidl::android::hardware::camera::device::StreamRotation;
using ::aidl::android::hardware::camera::device::StreamType;
using ::aidl::android::hardware::camera::metadata::RequestAvailableDynamicRangeProfilesMap;
using ::aidl::android::hardware::camera::metadata::ScalerAvailableStreamUseCases;
using ::aidl::android::hardware::camera::metadata::SensorPixelMode;
using ::aidl::android::hardware::graphics::common::BufferUsage;
using ::aidl::android::hardware::graphics::common::Dataspace;
using ::aidl::android::hardware::graphics::common::PixelFormat;
using ::aidl::vendor::zel::hardware::camera::offlinecamera::IOfflineCameraService;
using ::aidl::vendor::zel::hardware::camera::offlinecamera::IOfflineCameraSession;
using ::aidl::vendor::zel::hardware::camera::offlinecamera::OfflineFrameInfo;
using ::aidl::vendor::zel::hardware::camera::offlinecamera::OfflineRequestInfo;
using ::aidl::vendor::zel::hardware::camera::offlinecamera::OfflineSessionConfigureInfo;

// Results of client operations; the waits give kTimedOut instead.
enum ClientStatus : int32_t {
    kSuccess = 0,
    kFailed = 1,       // a service call failed, or a file read came short
    kNullGiven = 4,    // a required reference was null
    kOpenFailed = 5,   // a source file could not be opened
    kTimedOut = -110,  // what was waited for did not come
};

// Operation modes; only B2Y, Y2J and MMF have streams.
enum OpMode : int32_t { kB2Y = 0, kY2J = 1, kY2Y = 2, kMMF = 3, kQLL = 4, kR2R = 5 };

// Where source frames are read and outputs are dumped, with its trailing slash.
extern const std::string kOfflineDataDirectory;

// The main thread runs every operation here and is the only one that waits; the callback object
// fills the result state from binder threads. m_resultLock guards m_resultFrameInfos. Service and
// session references are not tested before most calls: without a service the run ends at the first
// call through the empty reference. That is this tool's behaviour, as its error line says all there
// is to say.
class OfflineCameraClient {
  public:
    class OfflineCameraCallBacks;  // offlinecameracallbacks.h

    // --- lifecycle.cpp -------------------------------------------------------------------------

    // The one instance, constructed by the first call and destroyed at process exit.
    static OfflineCameraClient& GetInstance();

    OfflineCameraClient(const OfflineCameraClient&) = delete;
    OfflineCameraClient& operator=(const OfflineCameraClient&) = delete;

    // --- sessioncontrol.cpp --------------------------------------------------------------------

    // Stores the mode for ConfigureOfflineStreams; does not call the service.
    void setOpMode(int32_t opMode);

    // Makes the callback known to the service, whose answer is not examined.
    void registerClient(int32_t clientId);

    // Opens a session. A failure shows only in the missing log line.
    void OpenOfflineSession(std::string clientName);

    // Closes the open session, if any; its reference stays until the client's destruction.
    void CloseOfflineSession();

    // --- streamconfiguration.cpp ---------------------------------------------------------------

    // Builds the mode's streams and sends them to the session: 0 accepted, 1 otherwise.
    int32_t ConfigureOfflineStreams(std::string cameraId);

    // --- submission.cpp ------------------------------------------------------------------------

    // Builds the request and submits it: 0; 1 the call failed; 4 no session; or the builder's code.
    int32_t ProcessOfflineRequest();

    // Waits up to 5 s for each request's shutter and up to 5 s for its result, and dumps complete
    // results. Outcomes are logged.
    void WaitCaptureResultCompleted();

    // Empties what callbacks have left.
    void ClearResultsAndMessages();

  private:
    // For the workstation's plane-layout provider and the benchmarks, which define it themselves.
    friend struct OfflineCameraClientAccess;

    OfflineCameraClient();
    ~OfflineCameraClient();

    // --- streamconfiguration.cpp ---------------------------------------------------------------

    // Resets *stream and fills it. rotation, groupId and dynamicRangeProfile have one value in
    // every stream of this tool, which is written whatever is given.
    static void GetDummyStream(Stream* stream, uint32_t id, StreamType type, uint32_t width,
                               uint32_t height, PixelFormat format, BufferUsage usage,
                               Dataspace dataSpace, StreamRotation rotation,
                               std::string physicalCameraId, uint32_t bufferSize, int32_t groupId,
                               std::vector<SensorPixelMode>& sensorPixelModes,
                               RequestAvailableDynamicRangeProfilesMap dynamicRangeProfile,
                               ScalerAvailableStreamUseCases useCase);

    // Appends the mode's streams to the stream lists and to streamConfig: 0, or 4 for null. A mode
    // without streams is logged and still gives 0: refusing it is the service's decision.
    int32_t ConfigureOfflineStreamsInfo(OfflineSessionConfigureInfo* streamConfig);

    // --- sourceloading.cpp ---------------------------------------------------------------------

    // Reads an NV12 file of width x height into a locked buffer of the same stride and scan
    // lines: 0 loaded, 1 short read, 5 not opened.
    static int32_t LoadOffineSourceYUVFrame(const char* path, char* buffer, uint32_t width,
                                            uint32_t height);

    // Reads `scanline` rows of `stride` bytes of the RAW10 file into a locked buffer; as above.
    static int32_t LoadOffineSourceRawFrame(char* buffer, int32_t stride, int32_t scanline);

    // Fills a frame's input metadata from the dump file; leaves it alone when there is none.
    static void LoadOffineInputMetadata(std::vector<uint8_t>* metadata);

    // Fills a frame's input metadata with the one entry that Y2J needs.
    static void BuildJpegOrientationMetadata(std::vector<uint8_t>* metadata);

    // --- requestbuilding.cpp -------------------------------------------------------------------

    // One freshly allocated buffer. A null handle leaves sizes at 0.
    struct AllocatedBuffer {
        native_handle* handle = nullptr;
        uint32_t width = 0;  // as allocated: bytes for a BLOB
        uint32_t height = 0;
        int32_t stride = 0;
        int32_t scanline = 0;
        uint64_t allocationSize = 0;  // bytes
    };

    // Appends one request to m_offlineRequests: 0; 4 for null; or the failing load's code, with
    // nothing appended.
    int32_t InitOfflineRequest(const OfflineSessionConfigureInfo* streamConfig);

    // One frame's metadata and filled input buffers; returns the status of the last load, or the
    // one given if nothing was loaded.
    int32_t BuildInputFrame(size_t frame, int32_t status, OfflineFrameInfo* frameInfo);

    // Fills a locked buffer from the source file of its stream's format.
    int32_t LoadSourceFrame(const Stream& stream, const AllocatedBuffer& buffer, void* address,
                            int32_t status);

    // Allocates a buffer for the stream and records its handle in m_allocatedHandles.
    AllocatedBuffer AllocateStreamBuffer(const Stream& stream);

    // The wire form of a buffer, with duplicates of its descriptors.
    static StreamBuffer MakeStreamBuffer(const Stream& stream, int64_t bufferId,
                                         const native_handle* handle);

    // Adds the buffer to m_captureRequests.
    void RecordCaptureBuffer(const Stream& stream, int64_t bufferId, const AllocatedBuffer& buffer);

    // --- submission.cpp ------------------------------------------------------------------------

    bool WaitForShutter(int32_t frameNumber, uint32_t timeout_ms);
    bool IsShutterReceivedLocked(int32_t frameNumber);
    int32_t WaitForResult(OfflineRequestInfo* request, uint32_t timeout_ms);
    bool IsResultReceivedLocked(OfflineRequestInfo* request);

    // --- outputdump.cpp ------------------------------------------------------------------------

    // Writes each of the client's buffers that the result names to its file, and frees it.
    void DumpResultBuffer(const ClientStreamBuffer& resultBuffer, int32_t frameNumber);
    void DumpCaptureBuffer(const ClientCaptureRequest& request, const ClientCaptureBuffer& buffer,
                           int32_t frameNumber);
    std::string DumpFileName(const ClientCaptureRequest& request, const ClientCaptureBuffer& buffer,
                             int32_t frameNumber) const;
    static std::string ConvertStreamBufferInfo2String(PixelFormat format, uint32_t width,
                                                      uint32_t height, int32_t stride,
                                                      int32_t scanline);

    // --- bufferbookkeeping.cpp -----------------------------------------------------------------

    // Frees the handle through the wrapper if it is still on record; silent otherwise.
    void freeBuffer(native_handle* buffer);

    // Whether both name the same (stream, buffer) pairs, in any order.
    bool ContainsTheSameBuffers(std::vector<ClientStreamBuffer>* result,
                                std::vector<StreamBuffer>* request);

    // The order is the order of construction; destruction runs the other way, so that buffers can
    // be freed through the wrapper until the end.

    // Not set by the constructor: the instance lies in zero-initialised storage.
    int32_t m_returnFrameNumber;
    std::unique_ptr<OfflineCameraGralloc> m_grallocWrapper;
    std::unordered_set<native_handle*> m_allocatedHandles;
    std::unordered_map<uint32_t, ClientCaptureRequest> m_captureRequests;  // by stream id
    std::shared_ptr<IOfflineCameraService> m_service;

    // Placeholders: constructed and destroyed, not used.
    struct SpareFields {
        int32_t number = 0;
        uint8_t flag = 0;
        uint64_t value = 0;
    };
    struct ReservedRecord {
        uint64_t words[2];
    };
    OfflineSessionConfigureInfo m_spareConfigureInfo;
    SpareFields m_spareFields;

    OfflineSessionConfigureInfo m_configureInfo;
    int32_t m_opMode;  // not set by the constructor, as m_returnFrameNumber
    std::vector<ReservedRecord> m_reservedList;
    std::vector<OfflineRequestInfo> m_offlineRequests;
    std::shared_ptr<IOfflineCameraSession> m_offlineSession;
    std::shared_ptr<OfflineCameraCallBacks> m_callback;
    std::string m_streamConfigName;  // the camera id of the dump names
    std::mutex m_resultLock;
    std::condition_variable m_resultCondition;
    std::vector<Stream> m_inputStreams;
    std::vector<Stream> m_outputStreams;
    std::unique_ptr<OfflineCameraZelInterface> m_zelInterface;
    std::unordered_map<uint32_t, ClientFrameInfo> m_frameInfos;        // only ever cleared
    std::unordered_map<uint32_t, ClientFrameInfo> m_resultFrameInfos;  // by frame number
    std::vector<NotifyMsg> m_notifyMessages;                           // of the latest notify
};

}  // namespace vendor::zel::hardware::camera::offlinecamera::implementation
