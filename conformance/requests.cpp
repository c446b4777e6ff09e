// Checks of wrong requests: each is refused or fails with a message, and none is met with silence.
#include <fcntl.h>

#include "device.h"

namespace conformance {

namespace {

// A request to be changed: its frames, outputs, first input and first output.
struct Edit {
    Session& session;
    std::vector<package::OfflineFrameInfo>& frames;
    std::vector<device::StreamBuffer>& outputs;
    device::StreamBuffer &in, &out;
};
using ChangeRequest = std::function<void(Edit)>;

// `good` is what a good result would be.
Verdict Judge(Session& session, const Answer& sent, Outcome good) {
    if (!sent.Ok()) return sent.MustBeRefused();
    const Verdict result = session.AwaitResult(sent, "an answer");
    if (Failed(session.All(), sent.number)) return {};
    if (!result.Good() || good == Outcome::kOk) return result;
    if (good == Outcome::kWarn) return Warn("a result with good buffers");
    return Fail("a refusal, an error message or a broken buffer", Text(session.All()));
}

// Sends a request with a change, and a right one afterwards.
Check Wrong(const std::string& name, const std::string& what, const ChangeRequest& change,
            Outcome good = Outcome::kFail, std::optional<Mode> mode = {}) {
    const auto sends = [=](Session& session) {
        OfflineRequestInfo request = session.Request();
        auto& frames = request.inFrameInfos;
        auto& outputs = request.outputBuffers;
        change({session, frames, outputs, frames[0].buffers[0], outputs[0]});
        const Verdict verdict = Judge(session, session.Process(std::move(request)), good);
        if (verdict.outcome == Outcome::kFail) return verdict;
        const Verdict next = session.Exchange("a right request's result afterwards", 100);
        return next.Good() ? verdict : next;
    };
    const std::string rule = good == Outcome::kFail   ? " is refused."
                             : good == Outcome::kWarn ? " is better refused."
                                                      : " is answered.";
    return {name, what + rule, OnStreams(sends, mode)};
}

NativeHandle NoBuffer() {
    NativeHandle handle;
    handle.fds.emplace_back(open("/dev/null", O_RDWR | O_CLOEXEC));
    handle.ints = {1, 2, 3};
    return handle;
}

// Of half the rows and bytes of the first or last stream.
NativeHandle SmallBuffer(Session& session, bool first) {
    Stream stream = first ? session.info.streams.front() : session.info.streams.back();
    stream.height /= 2;
    stream.bufferSize /= 2;
    return session.device.pool.Get(stream).Handle();
}

Verdict RefusesBeforeStreams(Device& device) {
    const PlainRun* run = device.CanOpen() ? device.Working() : nullptr;
    if (run == nullptr) return Skip("no mode brings results");
    return OnSession([=](Session& session) {
        session.info = run->info;
        return Judge(session, session.Process(session.Request()), Outcome::kFail);
    })(device);
}

// With numbers of their own, as a call returns only one.
Verdict AnswersTenInACall(Session& session) {
    std::vector<OfflineRequestInfo> requests;
    for (int i = 0; i < 10; ++i) {
        requests.push_back(session.Request(100 * i));
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
        {"before-streams", "A request before the streams is refused.", RefusesBeforeStreams},
        {"none", "An empty list of requests is refused.", OnStreams([](Session& s) {
             return s.Process(std::vector<OfflineRequestInfo>()).MustBeRefused();
         })},
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
              [](Edit e) { e.out.buffer = SmallBuffer(e.session, false); }),
        Wrong("small-input", "An input buffer smaller than its stream",
              [](Edit e) { e.in.buffer = SmallBuffer(e.session, true); }),
        Wrong("format", "An output buffer of another format",
              [](Edit e) {
                  e.out.buffer =
                          e.session.device.pool.Get(ConfigurationOf(kB2Y).streams[0]).Handle();
              }),
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
