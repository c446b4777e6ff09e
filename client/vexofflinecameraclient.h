// The process-wide client of the offline camera service: one class, whose operations are the steps
// of a run. Each group of operations below names its source file.
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

// Results of client operations; a wait returns kSuccess or kTimedOut.
enum ClientStatus : int32_t {
    kSuccess = 0,
    kFailed = 1,       // a service call failed, or a file was too short
    kNullGiven = 4,    // a required reference was null
    kOpenFailed = 5,   // a source file could not be opened
    kTimedOut = -110,  // no result in time
};

// Operation modes; only B2Y, Y2J and MMF have streams.
enum OpMode : int32_t { kB2Y = 0, kY2J = 1, kY2Y = 2, kMMF = 3, kQLL = 4, kR2R = 5 };

// Where source frames are read and outputs are dumped, with its trailing slash.
inline const std::string kOfflineDataDirectory = "/data/vendor/camera/offlinecameratest/";

// The main thread runs a test and is the only one that waits. Meanwhile the service calls the
// callback object on binder threads, and it changes three members:
// - m_resultFrameInfos, under m_resultLock. The main thread takes this lock, too, except for dumps.
// - m_notifyMessages, without a lock: see notify() in resultcallbacks.cpp.
// - m_allocatedHandles, when it lends a buffer, without a lock that the main thread takes.
//
// Kept: service and session references are not tested before most calls. Without a service, the
// process dies at the first call; the constructor's error line is the only diagnosis.
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

    // Makes the callback known to the service. Logs the same whether that works or not.
    void registerClient(int32_t clientId);

    // Opens a session. The only sign of a failure is that the log line is missing.
    void OpenOfflineSession(std::string clientName);

    // Closes the session, if there is one. Its reference stays until the client's destruction.
    void CloseOfflineSession();

    // --- streamconfiguration.cpp ---------------------------------------------------------------

    // Builds the mode's streams and sends them to the session. Returns 0, or 1 if that fails.
    int32_t ConfigureOfflineStreams(std::string cameraId);

    // --- submission.cpp ------------------------------------------------------------------------

    // Builds the request and submits it. Returns 0; 1 if the call fails; 4 without a session; or
    // what InitOfflineRequest returned.
    int32_t ProcessOfflineRequest();

    // Waits up to 5 s for each request's shutter, then up to 5 s for its result, which it dumps.
    void WaitCaptureResultCompleted();

    // Forgets all results and messages.
    void ClearResultsAndMessages();

  private:
    // For the workstation's plane-layout provider and the benchmarks, which define it themselves.
    friend struct OfflineCameraClientAccess;

    OfflineCameraClient();
    ~OfflineCameraClient();

    // --- streamconfiguration.cpp ---------------------------------------------------------------

    // Resets *stream and fills it. Kept: rotation, groupId and dynamicRangeProfile are ignored, as
    // they are the same in every stream.
    static void GetDummyStream(Stream* stream, uint32_t id, StreamType type, uint32_t width,
                               uint32_t height, PixelFormat format, BufferUsage usage,
                               Dataspace dataSpace, StreamRotation rotation,
                               std::string physicalCameraId, uint32_t bufferSize, int32_t groupId,
                               std::vector<SensorPixelMode>& sensorPixelModes,
                               RequestAvailableDynamicRangeProfilesMap dynamicRangeProfile,
                               ScalerAvailableStreamUseCases useCase);

    // Appends the mode's streams to the stream lists and to *streamConfig. Returns 0, or 4 for
    // null. Kept: also 0, with an error line, for a mode without streams, which the service may
    // refuse.
    int32_t ConfigureOfflineStreamsInfo(OfflineSessionConfigureInfo* streamConfig);

    // --- sourceloading.cpp ---------------------------------------------------------------------

    // Reads an NV12 file into a locked buffer. Both have rows of `width` bytes, `height` of them in
    // the luma plane. Returns 0; 1 if the file is too short; 5 if it cannot be opened.
    static int32_t LoadOffineSourceYUVFrame(const char* path, char* buffer, uint32_t width,
                                            uint32_t height);

    // Reads `scanline` rows of `stride` bytes of the RAW10 file into a locked buffer. Returns as
    // above.
    static int32_t LoadOffineSourceRawFrame(char* buffer, int32_t stride, int32_t scanline);

    // Replaces a frame's metadata by the dump file's; leaves it alone when there is none.
    static void LoadOffineInputMetadata(std::vector<uint8_t>* metadata);

    // Replaces a frame's metadata by the one entry that Y2J needs.
    static void BuildJpegOrientationMetadata(std::vector<uint8_t>* metadata);

    // --- requestbuilding.cpp -------------------------------------------------------------------

    // A new buffer. With a null handle, scanline and allocationSize are 0.
    struct AllocatedBuffer {
        native_handle* handle = nullptr;
        uint32_t width = 0;           // as allocated: pixels; of a BLOB, bytes
        uint32_t height = 0;          // of a BLOB, 1
        int32_t stride = 0;           // as the allocator says
        int32_t scanline = 0;         // rows of the luma or raw plane
        uint64_t allocationSize = 0;  // bytes
    };

    // Appends one request to m_offlineRequests. Returns 0; or, with nothing appended, 4 for null or
    // the status of the last load.
    int32_t InitOfflineRequest(const OfflineSessionConfigureInfo* streamConfig);

    // Builds a request's frame `frame`, from 0: its metadata and its filled input buffers. Sets
    // *status to that of the last load, if there is one.
    OfflineFrameInfo BuildInputFrame(size_t frame, int32_t* status);

    // Fills a locked buffer from the source file for the mode and the stream's format, and sets
    // *status to the loader's result. Without such a file, leaves both alone.
    void LoadSourceFrame(const Stream& stream, const AllocatedBuffer& buffer, void* address,
                         int32_t* status);

    // Allocates a buffer for the stream and adds its handle to m_allocatedHandles. Also called on
    // binder threads.
    AllocatedBuffer AllocateStreamBuffer(const Stream& stream);

    // The buffer as it is sent, with duplicates of its descriptors.
    static StreamBuffer MakeStreamBuffer(const Stream& stream, int64_t bufferId,
                                         const native_handle* handle);

    // Adds the buffer to m_captureRequests.
    void RecordCaptureBuffer(const Stream& stream, int64_t bufferId, const AllocatedBuffer& buffer);

    // --- submission.cpp ------------------------------------------------------------------------

    // The waits take m_resultLock; callers of the other two hold it.
    bool WaitForShutter(int32_t frameNumber, uint32_t timeout_ms);
    bool IsShutterReceivedLocked(int32_t frameNumber);
    int32_t WaitForResult(OfflineRequestInfo* request, uint32_t timeout_ms);
    bool IsResultReceivedLocked(OfflineRequestInfo* request);

    // --- outputdump.cpp ------------------------------------------------------------------------

    // Writes the client's buffers of this stream and id to files and frees them.
    void DumpResultBuffer(const ClientStreamBuffer& resultBuffer, int32_t frameNumber);
    void DumpCaptureBuffer(const ClientCaptureRequest& request, const ClientCaptureBuffer& buffer,
                           int32_t frameNumber);
    std::string DumpFileName(const ClientCaptureRequest& request, const ClientCaptureBuffer& buffer,
                             int32_t frameNumber) const;
    static std::string ConvertStreamBufferInfo2String(PixelFormat format, uint32_t width,
                                                      uint32_t height, int32_t stride,
                                                      int32_t scanline);

    // --- bufferbookkeeping.cpp -----------------------------------------------------------------

    // Frees the buffer if m_allocatedHandles still has it; otherwise does and logs nothing.
    void freeBuffer(native_handle* buffer);

    // Whether both have the same pairs of stream id and buffer id, in any order.
    bool ContainsTheSameBuffers(std::vector<ClientStreamBuffer>* result,
                                std::vector<StreamBuffer>* request);

    // Members are destroyed last first, so the wrapper goes after everything that holds buffers.

    int32_t m_returnFrameNumber;  // 0 at first, as GetInstance()'s object is zero-initialised
    std::unique_ptr<OfflineCameraGralloc> m_grallocWrapper;
    std::unordered_set<native_handle*> m_allocatedHandles;
    std::unordered_map<uint32_t, ClientCaptureRequest> m_captureRequests;  // by stream id
    std::shared_ptr<IOfflineCameraService> m_service;

    // Placeholders, with m_reservedList: constructed and destroyed, not used.
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
    int32_t m_opMode;  // 0 at first, as m_returnFrameNumber
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
    std::unordered_map<uint32_t, ClientFrameInfo> m_frameInfos;        // stays empty
    std::unordered_map<uint32_t, ClientFrameInfo> m_resultFrameInfos;  // by frame number
    std::vector<NotifyMsg> m_notifyMessages;                           // of the latest notify
};

}  // namespace vendor::zel::hardware::camera::offlinecamera::implementation
