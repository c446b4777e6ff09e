// Checks a session's stream configuration.
#include "stream_set.h"

#include <algorithm>
#include <set>

#include "camera_metadata_blob.h"

namespace offlinecamera {

namespace {

using ::aidl::android::hardware::camera::device::StreamRotation;
using ::aidl::android::hardware::camera::device::StreamType;
using ::aidl::android::hardware::graphics::common::BufferUsage;
using ::aidl::android::hardware::graphics::common::PixelFormat;
using base::Done;
using base::Failure;
using base::Result;

constexpr int32_t kMaxSide = 32768;
constexpr size_t kMaxStreams = 8;

// What a mode takes and gives.
struct ModeShape {
    OpMode mode;
    uint32_t framesPerRequest;
    size_t inputCount;
    PixelFormat inputs[2];
    PixelFormat output;
};

constexpr PixelFormat kRaw = PixelFormat::RAW10;
constexpr PixelFormat kYuv = PixelFormat::YCBCR_420_888;
constexpr ModeShape kModes[] = {{OpMode::kB2Y, 1, 1, {kRaw}, kYuv},
                                {OpMode::kY2J, 1, 1, {kYuv}, PixelFormat::BLOB},
                                {OpMode::kMMF, 3, 2, {kRaw, kYuv}, kYuv}};

std::string Name(const Stream& stream) {
    return "stream " + std::to_string(stream.id);
}

std::string Size(const Stream& stream) {
    return std::to_string(stream.width) + " x " + std::to_string(stream.height);
}

Result<Done> CheckStream(const Stream& stream) {
    if (stream.streamType != StreamType::INPUT && stream.streamType != StreamType::OUTPUT) {
        return Failure{Name(stream) + " is neither input nor output"};
    }
    const bool raw = stream.format == kRaw;
    if (stream.width <= 0 || stream.width > kMaxSide || stream.width % (raw ? 4 : 2) != 0 ||
        stream.height <= 0 || stream.height > kMaxSide || stream.height % 2 != 0) {
        return Failure{Name(stream) + " is " + Size(stream) + ": sides are even, 2 to 32768" +
                       (raw ? ", and a RAW10 width is a multiple of 4" : "")};
    }
    if (stream.usage == BufferUsage::CPU_READ_NEVER) {
        return Failure{Name(stream) + " has usage 0: its buffers are read and written here"};
    }
    if (stream.rotation != StreamRotation::ROTATION_0) {
        return Failure{Name(stream) + " asks for rotation " + toString(stream.rotation) +
                       ": nothing is rotated here"};
    }
    if (stream.format == PixelFormat::BLOB && stream.bufferSize <= kBlobTrailerBytes) {
        return Failure{Name(stream) + " has a buffer size of " + std::to_string(stream.bufferSize) +
                       " bytes: a BLOB stream needs more than " +
                       std::to_string(kBlobTrailerBytes)};
    }
    return Done{};
}

// Sorts the streams, each checked on its own, into inputs and outputs.
Result<Done> SplitStreams(const std::vector<Stream>& streams, StreamSet* out) {
    if (streams.empty()) return Failure{"no streams"};
    if (streams.size() > kMaxStreams) {
        return Failure{std::to_string(streams.size()) + " streams: at most " +
                       std::to_string(kMaxStreams)};
    }
    std::set<int32_t> ids;
    for (const Stream& stream : streams) {
        if (auto checked = CheckStream(stream); !checked.Ok()) return checked;
        if (!ids.insert(stream.id).second) return Failure{Name(stream) + " is there twice"};
        (stream.streamType == StreamType::INPUT ? out->inputs : out->outputs).push_back(stream);
    }
    return Done{};
}

Result<Done> CheckFormats(const ModeShape& shape, const StreamSet& set) {
    if (set.inputs.size() != shape.inputCount) {
        return Failure{std::to_string(set.inputs.size()) + " input streams: the mode takes " +
                       std::to_string(shape.inputCount)};
    }
    for (size_t i = 0; i < set.inputs.size(); ++i) {
        if (set.inputs[i].format == shape.inputs[i]) continue;
        return Failure{"input " + Name(set.inputs[i]) + " has format " +
                       toString(set.inputs[i].format) + ": the mode takes " +
                       toString(shape.inputs[i])};
    }
    if (set.outputs.empty()) return Failure{"no output stream"};
    for (const Stream& output : set.outputs) {
        if (output.format == shape.output) continue;
        return Failure{"output " + Name(output) + " has format " + toString(output.format) +
                       ": the mode gives " + toString(shape.output)};
    }
    return Done{};
}

// Pictures are cropped, never scaled; a JPEG file shows the whole picture.
Result<Done> CheckSizes(const StreamSet& set) {
    const Stream& source = set.inputs[0];
    for (const Stream& output : set.outputs) {
        const bool file = output.format == PixelFormat::BLOB;
        const bool same = output.width == source.width && output.height == source.height;
        const bool inside = output.width <= source.width && output.height <= source.height;
        if (file ? same : inside) continue;
        return Failure{"output " + Name(output) + " is " + Size(output) +
                       (file ? ": its input is " + Size(source) + ", and nothing is scaled here"
                             : ": larger than its input of " + Size(source))};
    }
    return Done{};
}

}  // namespace

Result<StreamSet> MakeStreamSet(const OfflineSessionConfigureInfo& info) {
    const std::string mode = "op mode " + std::to_string(info.opMode);
    const auto* const shape =
            std::find_if(std::begin(kModes), std::end(kModes), [&](const ModeShape& known) {
                return static_cast<int32_t>(known.mode) == info.opMode;
            });
    if (shape == std::end(kModes)) {
        return Failure{mode + " has no stream set here: B2Y 0, Y2J 1 and MMF 3 have one"};
    }
    StreamSet set = {shape->mode, shape->framesPerRequest, {}, {}};
    Result<Done> checked = SplitStreams(info.streams, &set);
    if (checked.Ok()) checked = CheckFormats(*shape, set);
    if (checked.Ok()) checked = CheckSizes(set);
    if (checked.Ok()) checked = CheckMetadataBlob(info.sessionParams);
    if (!checked.Ok()) return Failure{mode + ": " + checked.Error()};
    return set;
}

}  // namespace offlinecamera
