// Writes the seeds that are encodings of real values: make_seeds tests/fuzz/corpus.
#include <aidl/android/hardware/camera/device/CaptureResult.h>
#include <aidl/android/hardware/camera/device/StreamConfiguration.h>
#include <aidl/android/hardware/graphics/allocator/AllocationResult.h>
#include <aidl/android/hardware/graphics/allocator/BufferDescriptorInfo.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineCaptureResult.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineRequestInfo.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineSessionConfigureInfo.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineStreamBufferRet.h>
#include <aidlcommonsupport/NativeHandle.h>
#include <imaging/jpeg.h>

#include "host/services/offlinecamera/camera_metadata_blob.h"
#include "host/tools/offlineframes/picture_file.h"
#include "host/tools/offlineframes/source_set.h"
#include "seed.h"

namespace {

using namespace ::aidl::android::hardware::camera::device;
using namespace ::aidl::android::hardware::graphics::allocator;
using namespace ::aidl::android::hardware::graphics::common;
using namespace ::aidl::vendor::zel::hardware::camera::offlinecamera;

std::string gFolder;

void save(const std::string& name, const std::string& bytes) {
    saveSeed(gFolder + "/" + name, bytes);
}

StreamBuffer buffer(int32_t stream, size_t which) {
    StreamBuffer made;
    made.streamId = stream;
    made.bufferId = 1;
    made.buffer = ::android::dupToAidl(fuzzBuffers()[which].get());
    return made;
}

Stream stream(int32_t id, StreamType type, PixelFormat format) {
    Stream made;
    made.id = id;
    made.streamType = type;
    made.width = 16;
    made.height = 12;
    made.format = format;
    made.usage = BufferUsage::CPU_READ_OFTEN;
    made.bufferSize = format == PixelFormat::BLOB ? 2000 : 0;
    return made;
}

// A session of 16 x 12 pictures: its formats, as the number of their buffers.
struct Mode {
    const char* name;
    int32_t opMode;
    size_t frames;
    std::vector<size_t> inputs;
    size_t output;
};

const Mode kModes[] = {
        {"session", 0, 1, {0}, 1}, {"session_y2j", 1, 1, {1}, 2}, {"session_mmf", 3, 3, {0, 1}, 1}};

OfflineSessionConfigureInfo configuration(const Mode& mode = kModes[0]) {
    constexpr PixelFormat kFormats[] = {PixelFormat::RAW10, PixelFormat::YCBCR_420_888,
                                        PixelFormat::BLOB};
    OfflineSessionConfigureInfo info;
    info.cameraId = "2";
    info.opMode = mode.opMode;
    int32_t id = 0;
    for (const size_t input : mode.inputs) {
        info.streams.push_back(stream(id++, StreamType::INPUT, kFormats[input]));
    }
    info.streams.push_back(stream(id, StreamType::OUTPUT, kFormats[mode.output]));
    return info;
}

OfflineRequestInfo request(const Mode& mode = kModes[0]) {
    OfflineRequestInfo info;
    info.frameNumber = -1;
    for (size_t f = 0; f < mode.frames; ++f) {
        OfflineFrameInfo frame;
        for (size_t i = 0; i < mode.inputs.size(); ++i) {
            frame.buffers.push_back(buffer(static_cast<int32_t>(i), mode.inputs[i]));
            frame.buffers.back().bufferId = static_cast<int64_t>(f * mode.inputs.size() + i + 1);
        }
        frame.metadata = offlinecamera::MakeResultMetadata(90);
        info.inFrameInfos.push_back(std::move(frame));
    }
    const auto output = static_cast<int32_t>(mode.inputs.size());
    info.outputBuffers.push_back(buffer(output, mode.output));
    return info;
}

void saveRecords() {
    save("records/request", record(0, request()));
    save("records/configuration", record(1, configuration()));
    OfflineCaptureResult result;
    result.frameNumber = 1;
    result.outFrameInfo.buffers.push_back(buffer(1, 1));
    save("records/result", record(2, result));
    OfflineStreamBufferRet ret;
    ret.stream = configuration().streams[0];
    std::vector<StreamBuffer> buffers(1);
    buffers[0] = buffer(0, 0);
    ret.val = StreamBuffersVal::make<StreamBuffersVal::buffers>(std::move(buffers));
    save("records/lent", record(4, ret));
    CaptureResult capture;
    capture.frameNumber = 3;
    capture.physicalCameraMetadata.emplace_back();
    save("records/capture", record(7, capture));
    save("records/stream_configuration", record(10, StreamConfiguration()));
    AllocationResult allocation;
    allocation.stride = 128;
    allocation.buffers.push_back(::android::dupToAidl(fuzzBuffers()[0].get()));
    save("records/allocation", record(20, allocation));
}

void saveCalls() {
    AParcel none, open, allocate;
    for (const Mode& mode : kModes) {
        AParcel configure, process;
        require(ndk::AParcel_writeData(&configure, configuration(mode)) == STATUS_OK);
        std::vector<OfflineRequestInfo> requests;
        requests.push_back(request(mode));
        require(ndk::AParcel_writeVector(&process, requests) == STATUS_OK);
        save(std::string("services/") + mode.name,
             call(0, 0, configure) + call(0, 1, process) + call(0, 2, none));
    }
    require(AParcel_writeString(&open, "x", 1) == STATUS_OK);
    const std::string client(1, static_cast<char>(kBinderPiece | 2 << kPieceShift));
    const std::string opened = pieces(open) + client;
    const std::string registered = char{kBytesPiece} + sized(bytesOf(int32_t{5})) + client;
    save("services/open", std::string{1, 3, 0} + sized(opened) + std::string{1, 1, 0} +
                                  sized(registered) + call(1, 0, none));
    BufferDescriptorInfo description;
    description.width = 16;
    description.height = 12;
    description.layerCount = 1;
    description.format = PixelFormat::RAW10;
    require(ndk::AParcel_writeData(&allocate, description) == STATUS_OK);
    require(allocate.write(int32_t{2}) == STATUS_OK);
    save("services/allocate", call(3, 1, allocate) + call(3, 2, allocate) + call(3, 3, none));
}

std::string message(hostbinder::FrameKind kind, uint64_t id, uint64_t target,
                    const std::string& body = "", uint32_t references = 0, uint32_t fds = 0,
                    uint64_t chain = 0) {
    hostbinder::FrameHeader header{};
    header.kind = kind;
    header.id = id;
    header.target = target;
    header.chain = chain;
    header.objectCount = references + fds;
    header.referenceCount = references;
    header.descriptorCount = fds;
    header.dataSize = static_cast<uint32_t>(body.size() - header.objectCount * sizeof(uint32_t) -
                                            references * sizeof(hostbinder::ReferenceRecord));
    return static_cast<char>(fds) + sized(bytesOf(header) + body);
}

void saveMessages() {
    using namespace hostbinder;
    const std::string binder = bytesOf(ObjectRecord{kBinderHandle, 0, 0, 0}) + bytesOf(int32_t{0});
    const auto reference = [](ReferenceOwner owner, const char* name) {
        ReferenceRecord record{owner, 0, 1, {}};
        memcpy(record.name, name, strlen(name));
        return bytesOf(uint32_t{0}) + bytesOf(record);
    };
    const std::string theirs = binder + reference(ReferenceOwner::kSender, "");
    const std::string ours = binder + reference(ReferenceOwner::kReceiver, "");
    const std::string others = binder + reference(ReferenceOwner::kOther, "other-1");
    const std::string file = bytesOf(uint64_t{0}) + bytesOf(ObjectRecord{kDescriptor, 0, 0, 0}) +
                             bytesOf(uint32_t{8});
    save("binder_connection/calls", message(FrameKind::kCall, 9, 1, theirs, 1) +
                                            message(FrameKind::kCall, 10, 1, ours, 1) +
                                            message(FrameKind::kCall, 11, 1, others, 1) +
                                            message(FrameKind::kCall, 12, 1, file, 0, 1));
    save("binder_connection/nested", message(FrameKind::kCall, 9, 1, ours, 1, 0, 1) +
                                             message(FrameKind::kReply, 1, 0, theirs, 1));
    save("binder_connection/reply", message(FrameKind::kReply, 1, 0, ours, 1));
    save("binder_connection/reply_theirs", message(FrameKind::kReply, 1, 0, theirs, 1));
    save("binder_connection/control",
         message(FrameKind::kAcquire, 4, 1) + message(FrameKind::kRelease, 2, 1) +
                 message(FrameKind::kReferencesTaken, 3, 0) + message(FrameKind::kAcquire, 5, 99));
}

void saveOthers() {
    const std::vector<uint8_t> blob = offlinecamera::MakeResultMetadata(90);
    save("metadata/orientation", std::string(blob.begin(), blob.end()));
    const auto dump = offlineframes::makeMetadataDump();
    require(dump.Ok());
    save("metadata/dump", std::string(dump.Value().begin(), dump.Value().end()));
    for (size_t i = 0; i < fuzzBuffers().size(); ++i) {
        graphics::HandleIntegers integers;
        require(graphics::readIntegers(fuzzBuffers()[i].get(), &integers));
        save("buffer_handle/format" + std::to_string(i), std::string{1, 4} + bytesOf(integers));
    }
    offlineframes::Picture picture(5, 4);
    for (size_t i = 0; i < picture.rgb.size(); ++i) picture.rgb[i] = static_cast<uint8_t>(4 * i);
    const auto png = offlineframes::encodePng(picture, "seed");
    require(png.Ok());
    save("picture/png", std::string(png.Value().begin(), png.Value().end()));
    save("picture/ppm",
         "P6\n# five by four\n5 4 255\n" + std::string(picture.rgb.begin(), picture.rgb.end()));
    std::vector<uint8_t> jpeg(8192);
    size_t size = 0;
    const std::vector<uint8_t> planes(16 * 12 * 3 / 2, 77);
    require(imaging::EncodeJpeg({planes.data(), planes.data() + 16 * 12, 16, 12, 16}, {95, 90},
                                jpeg.data(), jpeg.size(), &size)
                    .empty());
    save("picture/jpeg", std::string(jpeg.begin(), jpeg.begin() + static_cast<ptrdiff_t>(size)));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    gFolder = argv[1];
    saveRecords();
    saveCalls();
    saveMessages();
    saveOthers();
    return 0;
}
