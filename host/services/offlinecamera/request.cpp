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

/** Imports the buffers of one request; remembers which ids were used. */
class BufferCollector {
  public:
    explicit BufferCollector(const ::android::sp<ImportedBuffer::IMapper>& mapper)
        : mMapper(mapper) {}

    /** One buffer for each of `streams`. Result in the order of `buffers`. */
    std::string Collect(const std::vector<StreamBuffer>& buffers,
                        const std::vector<Stream>& streams, std::vector<RequestBuffer>* out) {
        if (buffers.size() != streams.size()) {
            return std::to_string(buffers.size()) + " buffers: the mode takes " +
                   std::to_string(streams.size()) + ", one of each stream";
        }
        std::set<int32_t> served;
        for (const StreamBuffer& buffer : buffers) {
            const Stream* stream = Find(buffer.streamId, streams);
            if (stream == nullptr) {
                return "stream " + std::to_string(buffer.streamId) + " is not configured here";
            }
            if (!served.insert(stream->id).second) {
                return "stream " + std::to_string(stream->id) + " has two buffers";
            }
            RequestBuffer item;
            if (std::string problem = Import(buffer, *stream, &item); !problem.empty()) {
                return "stream " + std::to_string(stream->id) + ", buffer " +
                       std::to_string(buffer.bufferId) + ": " + problem;
            }
            out->push_back(std::move(item));
        }
        return {};
    }

  private:
    static const Stream* Find(int32_t id, const std::vector<Stream>& streams) {
        for (const Stream& stream : streams) {
            if (stream.id == id) return &stream;
        }
        return nullptr;
    }

    std::string Import(const StreamBuffer& buffer, const Stream& stream, RequestBuffer* out) {
        if (buffer.bufferId == 0) return "the buffer id is 0";
        if (!mUsedIds.emplace(stream.id, buffer.bufferId).second)
            return "the buffer id is used twice";
        if (buffer.status != BufferStatus::OK) return "the buffer is marked as broken";
        if (!buffer.releaseFence.fds.empty() || !buffer.releaseFence.ints.empty()) {
            return "there is a release fence: it is the service that would set one";
        }
        out->stream = &stream;
        out->bufferId = buffer.bufferId;
        return out->buffer.Import(mMapper, buffer.buffer, buffer.acquireFence, stream);
    }

    const ::android::sp<ImportedBuffer::IMapper> mMapper;
    std::set<std::pair<int32_t, int64_t>> mUsedIds;
};

std::string CheckMetadata(const OfflineRequestInfo& info) {
    if (std::string problem = CheckMetadataBlob(info.metadata); !problem.empty()) return problem;
    for (size_t f = 0; f < info.inFrameInfos.size(); ++f) {
        std::string problem = CheckMetadataBlob(info.inFrameInfos[f].metadata);
        if (!problem.empty()) return "frame " + std::to_string(f) + ": " + problem;
    }
    return {};
}

std::string FindOrientation(const OfflineRequestInfo& info, int32_t* out) {
    const auto ofFrame = FindJpegOrientation(info.inFrameInfos[0].metadata);
    *out = ofFrame.value_or(FindJpegOrientation(info.metadata).value_or(0));
    if (imaging::ExifOrientation(*out) != 0) return {};
    return "JPEG orientation of " + std::to_string(*out) +
           " degrees: 0, 90, 180 and 270 are possible";
}

/** Into the order of the stream set, whose streams lie in one vector. */
void SortByStream(std::vector<RequestBuffer>* buffers) {
    std::sort(buffers->begin(), buffers->end(),
              [](const RequestBuffer& a, const RequestBuffer& b) { return a.stream < b.stream; });
}

}  // namespace

std::string MakeRequest(const OfflineRequestInfo& info, std::shared_ptr<const StreamSet> streams,
                        const ::android::sp<ImportedBuffer::IMapper>& mapper, Request* out) {
    if (info.frameNumber < -1) {
        return "frame number " + std::to_string(info.frameNumber) + ": -1 asks for one";
    }
    if (info.inFrameInfos.size() != streams->framesPerRequest) {
        return std::to_string(info.inFrameInfos.size()) + " input frames: the mode takes " +
               std::to_string(streams->framesPerRequest);
    }
    std::string problem = CheckMetadata(info);
    if (problem.empty()) problem = FindOrientation(info, &out->orientation);
    BufferCollector collector(mapper);
    for (size_t f = 0; problem.empty() && f < info.inFrameInfos.size(); ++f) {
        std::vector<RequestBuffer> frame;
        problem = collector.Collect(info.inFrameInfos[f].buffers, streams->inputs, &frame);
        if (!problem.empty()) problem = "input frame " + std::to_string(f) + ": " + problem;
        SortByStream(&frame);
        out->inputs.push_back(std::move(frame));
    }
    if (problem.empty()) {
        problem = collector.Collect(info.outputBuffers, streams->outputs, &out->outputs);
        if (!problem.empty()) problem = "output: " + problem;
    }
    out->frameNumber = info.frameNumber;
    out->streams = std::move(streams);
    return problem;
}

}  // namespace offlinecamera
