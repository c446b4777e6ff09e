// Checks of wrong requests: each is refused or fails with a message, and none is met with silence.
#include <fcntl.h>

#include "device.h"

namespace conformance {

namespace {

// A request to be changed: the session's streams, the request's frames, outputs, first input and
// first output.
struct Edit {
    Pool& pool;
    const std::vector<Stream>& streams;
    std::vector<package::OfflineFrameInfo>& frames;
    std::vector<device::StreamBuffer>& outputs;
    device::StreamBuffer &in, &out;
};
using ChangeRequest = std::function<void(Edit)>;

// Sends a request with a change, and a right one afterwards.
Check Wrong(const std::string& name, const std::string& what, const ChangeRequest& change,
            Outcome good = Outcome::kFail, std::optional<Mode> mode = {}) {
    const auto sends = [=](Session& session) {
        Requests requests = session.Request();
        auto& frames = requests[0].inFrameInfos;
        auto& outputs = requests[0].outputBuffers;
        change({session.device.pool, session.info.streams, frames, outputs, frames[0].buffers[0],
                outputs[0]});
        const Verdict verdict = session.AwaitAnswer(session.Process(std::move(requests)), good);
        if (verdict.outcome == Outcome::kFail) return verdict;
        const Verdict next = session.Exchange("a right request's result afterwards", 100);
        return next.Good() ? verdict : next;
    };
    const std::string rule = good == Outcome::kFail   ? " is refused."
                             : good == Outcome::kWarn ? " is better refused."
                                                      : " is answered.";
    return {name, what + rule, OnStreams(sends, Works(mode))};
}

NativeHandle NoBuffer() {
    NativeHandle handle;
    handle.fds.emplace_back(open("/dev/null", O_RDWR | O_CLOEXEC));
    handle.ints = {1, 2, 3};
    return handle;
}

// Of half the rows and bytes of the stream.
NativeHandle SmallBuffer(Pool& pool, Stream stream) {
    stream.height /= 2;
    stream.bufferSize /= 2;
    return pool.Get(stream).Handle();
}

Verdict RefusesRequest(Session& session) {
    return session.AwaitAnswer(session.Process(session.Request()), Outcome::kFail);
}

// With numbers of their own, as a call returns only one.
Verdict AnswersTenInACall(Session& session) {
    Requests requests;
    for (int i = 0; i < 10; ++i) {
        requests.push_back(std::move(session.Request(100 * i)[0]));
        requests.back().frameNumber = 1000 + i;
    }
    const Answer answer = session.Process(std::move(requests));
    return answer.Ok() ? session.AwaitEnds(10) : answer.MustBeRefused();
}

Verdict AnswersTenCalls(Session& session) {
    size_t taken = 0;
    for (int i = 0; i < 10; ++i) {
        const Answer answer = session.Process(session.Request(100 * i));
        if (!answer.MustReturn().Good()) return answer.MustReturn();
        taken += answer.Ok();
    }
    return session.AwaitEnds(taken);
}

}  // namespace

const Checks kRequestChecks = {
        {"before-streams", "A request before the streams is refused.",
         OnSession(RefusesRequest, Works())},
        {"none", "An empty list of requests is refused.",
         OnStreams([](Session& s) { return s.Process({}).MustBeRefused(); })},
        Wrong("output-stream", "An output of an unknown stream",
              [](Edit e) { e.out.streamId = 77; }),
        Wrong("input-stream", "An input of an unknown stream", [](Edit e) { e.in.streamId = 77; }),
        Wrong("exchanged", "A request with input and output under each other's stream",
              [](Edit e) { std::swap(e.in.streamId, e.out.streamId); }),
        Wrong(
                "buffer-id", "A buffer id of 0, which is no buffer's,",
                [](Edit e) { e.out.bufferId = 0; }, Outcome::kWarn),
        Wrong("no-input-handle", "An input without a handle", [](Edit e) { e.in.buffer = {}; }),
        Wrong("no-output-handle", "An output without a handle", [](Edit e) { e.out.buffer = {}; }),
        Wrong("foreign-handle", "A handle that is no graphics buffer",
              [](Edit e) { e.out.buffer = NoBuffer(); }),
        Wrong("descriptor", "A descriptor that is not the buffer's memory",
              [](Edit e) { std::swap(e.in.buffer.fds[0], NoBuffer().fds[0]); }),
        Wrong("small-output", "An output buffer smaller than its stream",
              [](Edit e) { e.out.buffer = SmallBuffer(e.pool, e.streams.back()); }),
        Wrong("small-input", "An input buffer smaller than its stream",
              [](Edit e) { e.in.buffer = SmallBuffer(e.pool, e.streams.front()); }),
        Wrong("format", "An output buffer of another format",
              [](Edit e) { e.out.buffer = e.pool.Get(ConfigurationOf(kB2Y).streams[0]).Handle(); }),
        Wrong("no-frames", "A request without input frames", [](Edit e) { e.frames.clear(); }),
        Wrong(
                "few-frames", "A request of MMF with two frames",
                [](Edit e) { e.frames.pop_back(); }, Outcome::kFail, kMMF),
        Wrong("extra-frame", "A request with an empty frame too many",
              [](Edit e) { e.frames.emplace_back(); }),
        Wrong("extra-output", "A request with an output too many",
              [](Edit e) { e.outputs.emplace_back(); }),
        Wrong("no-inputs", "A frame without buffers", [](Edit e) { e.frames[0].buffers.clear(); }),
        Wrong("no-outputs", "A request without outputs", [](Edit e) { e.outputs.clear(); }),
        Wrong(
                "no-metadata", "A request without metadata",
                [](Edit e) { e.frames[0].metadata.clear(); }, Outcome::kOk),
        Wrong(
                "metadata", "Metadata that is no blob",
                [](Edit e) { e.frames[0].metadata.assign(500, 0xee); }, Outcome::kWarn),
        {"ten-in-one-call", "Ten requests in a call are refused, or each is answered.",
         OnStreams(AnswersTenInACall)},
        {"ten-calls", "Ten requests in a row are each refused or answered.",
         OnStreams(AnswersTenCalls)},
};

}  // namespace conformance
