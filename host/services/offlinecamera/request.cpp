// Checks offline requests and imports their buffers.
#include "request.h"

#include <imaging/jpeg.h>

#include <algorithm>
#include <set>
#include <utility>

#include "camera_metadata_blob.h"

namespace offlinecamera {

namespace {

using ::aidl::android::hardware::camera::device::BufferStatus;
using base::Failure;
using base::Result;

// The buffers that a request has named so far, each by its stream and its id.
using NamedBuffers = std::set<std::pair<int32_t, int64_t>>;

Result<ImportedBuffer> Import(const StreamBuffer& buffer, const Stream& stream,
                              NamedBuffers* named) {
    if (buffer.bufferId == 0) return Failure{"the buffer id is 0"};
    if (!named->emplace(stream.id, buffer.bufferId).second) {
        return Failure{"the buffer id is used twice"};
    }
    if (buffer.status != BufferStatus::OK) return Failure{"the buffer is marked as broken"};
    if (!buffer.releaseFence.fds.empty() || !buffer.releaseFence.ints.empty()) {
        return Failure{"there is a release fence: only the service sets one"};
    }
    return ImportedBuffer::Import(buffer.buffer, buffer.acquireFence, stream);
}

// One buffer for each of `streams`, in the order of `buffers`.
Result<std::vector<RequestBuffer>> Collect(const std::vector<StreamBuffer>& buffers,
                                           const std::vector<Stream>& streams,
                                           NamedBuffers* named) {
    if (buffers.size() != streams.size()) {
        return Failure{std::to_string(buffers.size()) + " buffers: the mode takes " +
                       std::to_string(streams.size()) + ", one of each stream"};
    }
    std::vector<RequestBuffer> collected;
    std::set<int32_t> served;
    for (const StreamBuffer& buffer : buffers) {
        const std::string name = "stream " + std::to_string(buffer.streamId);
        const auto stream = std::find_if(streams.begin(), streams.end(),
                                         [&](const Stream& s) { return s.id == buffer.streamId; });
        if (stream == streams.end()) return Failure{name + " is not configured here"};
        if (!served.insert(stream->id).second) return Failure{name + " has two buffers"};
        Result<ImportedBuffer> imported = Import(buffer, *stream, named);
        if (!imported.Ok()) {
            return Failure{name + ", buffer " + std::to_string(buffer.bufferId) + ": " +
                           imported.Error()};
        }
        collected.push_back({&*stream, buffer.bufferId, std::move(imported).Value()});
    }
    return collected;
}

Result<int32_t> FindOrientation(const OfflineRequestInfo& info) {
    const auto ofFrame = FindJpegOrientation(info.inFrameInfos[0].metadata);
    const int32_t degrees = ofFrame.value_or(FindJpegOrientation(info.metadata).value_or(0));
    if (imaging::ExifOrientation(degrees) != 0) return degrees;
    return Failure{"JPEG orientation of " + std::to_string(degrees) +
                   " degrees: 0, 90, 180 and 270 are possible"};
}

}  // namespace

Result<Request> MakeRequest(const OfflineRequestInfo& info,
                            std::shared_ptr<const StreamSet> streams) {
    if (info.frameNumber < -1) {
        return Failure{"frame number " + std::to_string(info.frameNumber) + ": -1 asks for one"};
    }
    if (info.inFrameInfos.size() != streams->framesPerRequest) {
        return Failure{std::to_string(info.inFrameInfos.size()) + " input frames: the mode takes " +
                       std::to_string(streams->framesPerRequest)};
    }
    if (auto checked = CheckMetadataBlob(info.metadata); !checked.Ok()) {
        return checked.GetFailure();
    }
    Request request;
    NamedBuffers named;
    for (size_t f = 0; f < info.inFrameInfos.size(); ++f) {
        const std::string name = "frame " + std::to_string(f) + ": ";
        const auto checked = CheckMetadataBlob(info.inFrameInfos[f].metadata);
        if (!checked.Ok()) return Failure{name + checked.Error()};
        auto frame = Collect(info.inFrameInfos[f].buffers, streams->inputs, &named);
        if (!frame.Ok()) return Failure{"input " + name + frame.Error()};
        // Into the order of the stream set, whose streams are in one vector.
        std::sort(frame.Value().begin(), frame.Value().end(),
                  [](const auto& a, const auto& b) { return a.stream < b.stream; });
        request.inputs.push_back(std::move(frame).Value());
    }
    auto outputs = Collect(info.outputBuffers, streams->outputs, &named);
    if (!outputs.Ok()) return Failure{"output: " + outputs.Error()};
    const Result<int32_t> orientation = FindOrientation(info);
    if (!orientation.Ok()) return orientation.GetFailure();
    request.outputs = std::move(outputs).Value();
    request.frameNumber = info.frameNumber;
    request.streams = std::move(streams);
    request.orientation = orientation.Value();
    return request;
}

}  // namespace offlinecamera
