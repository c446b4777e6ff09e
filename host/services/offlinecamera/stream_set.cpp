// Checks a session's stream configuration.
#include "stream_set.h"

#include <set>

#include "camera_metadata_blob.h"

namespace offlinecamera {

namespace {

using ::aidl::android::hardware::camera::device::StreamRotation;
using ::aidl::android::hardware::camera::device::StreamType;
using ::aidl::android::hardware::graphics::common::PixelFormat;

constexpr int32_t kMaxSide = 32768;
constexpr size_t kMaxStreams = 8;

/** What a mode takes and gives. */
struct ModeShape {
    OpMode mode;
    uint32_t framesPerRequest;
    std::vector<PixelFormat> inputs;
    PixelFormat output;
};

const ModeShape* FindMode(int32_t opMode) {
    static const auto* shapes = new std::vector<ModeShape>{
            {OpMode::kB2Y, 1, {PixelFormat::RAW10}, PixelFormat::YCBCR_420_888},
            {OpMode::kY2J, 1, {PixelFormat::YCBCR_420_888}, PixelFormat::BLOB},
            {OpMode::kMMF,
             3,
             {PixelFormat::RAW10, PixelFormat::YCBCR_420_888},
             PixelFormat::YCBCR_420_888},
    };
    for (const ModeShape& shape : *shapes) {
        if (static_cast<int32_t>(shape.mode) == opMode) return &shape;
    }
    return nullptr;
}

std::string Name(const Stream& stream) {
    return "stream " + std::to_string(stream.id);
}

std::string Size(const Stream& stream) {
    return std::to_string(stream.width) + " x " + std::to_string(stream.height);
}

std::string CheckStream(const Stream& stream) {
    if (stream.streamType != StreamType::INPUT && stream.streamType != StreamType::OUTPUT) {
        return Name(stream) + " is neither input nor output";
    }
    const bool raw = stream.format == PixelFormat::RAW10;
    if (stream.width <= 0 || stream.width > kMaxSide || stream.width % (raw ? 4 : 2) != 0 ||
        stream.height <= 0 || stream.height > kMaxSide || stream.height % 2 != 0) {
        return Name(stream) + " is " + Size(stream) + ": sides are even, 2 to 32768" +
               (raw ? ", and a RAW10 width is a multiple of 4" : "");
    }
    if (stream.rotation != StreamRotation::ROTATION_0) {
        return Name(stream) + " asks for rotation " + toString(stream.rotation) +
               ": nothing is rotated here";
    }
    if (stream.format == PixelFormat::BLOB && stream.bufferSize <= kBlobTrailerBytes) {
        return Name(stream) + " has a buffer size of " + std::to_string(stream.bufferSize) +
               " bytes: a BLOB stream needs more than " + std::to_string(kBlobTrailerBytes);
    }
    return {};
}

/** Sorts the streams into inputs and outputs, each checked on its own. */
std::string SplitStreams(const std::vector<Stream>& streams, StreamSet* out) {
    if (streams.empty()) return "no streams";
    if (streams.size() > kMaxStreams) {
        return std::to_string(streams.size()) + " streams: at most " + std::to_string(kMaxStreams);
    }
    std::set<int32_t> ids;
    for (const Stream& stream : streams) {
        if (std::string problem = CheckStream(stream); !problem.empty()) return problem;
        if (!ids.insert(stream.id).second) return Name(stream) + " is there twice";
        (stream.streamType == StreamType::INPUT ? out->inputs : out->outputs).push_back(stream);
    }
    return {};
}

std::string CheckFormats(const ModeShape& shape, const StreamSet& set) {
    if (set.inputs.size() != shape.inputs.size()) {
        return std::to_string(set.inputs.size()) + " input streams: the mode takes " +
               std::to_string(shape.inputs.size());
    }
    for (size_t i = 0; i < set.inputs.size(); ++i) {
        if (set.inputs[i].format != shape.inputs[i]) {
            return "input " + Name(set.inputs[i]) + " has format " +
                   toString(set.inputs[i].format) + ": the mode takes " + toString(shape.inputs[i]);
        }
    }
    if (set.outputs.empty()) return "no output stream";
    for (const Stream& output : set.outputs) {
        if (output.format != shape.output) {
            return "output " + Name(output) + " has format " + toString(output.format) +
                   ": the mode gives " + toString(shape.output);
        }
    }
    return {};
}

/** Pictures are cropped, never scaled; a JPEG file shows the whole picture. */
std::string CheckSizes(const StreamSet& set) {
    const Stream& source = set.inputs[0];
    for (const Stream& output : set.outputs) {
        if (output.format == PixelFormat::BLOB) {
            if (output.width != source.width || output.height != source.height) {
                return "output " + Name(output) + " is " + Size(output) + ": its input is " +
                       Size(source) + ", and nothing is scaled here";
            }
        } else if (output.width > source.width || output.height > source.height) {
            return "output " + Name(output) + " is " + Size(output) +
                   ": larger than its input of " + Size(source);
        }
    }
    return {};
}

}  // namespace

std::string MakeStreamSet(const OfflineSessionConfigureInfo& info, StreamSet* out) {
    const ModeShape* shape = FindMode(info.opMode);
    if (shape == nullptr) {
        return "op mode " + std::to_string(info.opMode) +
               " has no stream set here: B2Y 0, Y2J 1 and MMF 3 have one";
    }
    StreamSet set = {shape->mode, shape->framesPerRequest, {}, {}};
    std::string problem = SplitStreams(info.streams, &set);
    if (problem.empty()) problem = CheckFormats(*shape, set);
    if (problem.empty()) problem = CheckSizes(set);
    if (problem.empty()) problem = CheckMetadataBlob(info.sessionParams);
    if (!problem.empty()) return "op mode " + std::to_string(info.opMode) + ": " + problem;
    *out = std::move(set);
    return {};
}

}  // namespace offlinecamera
