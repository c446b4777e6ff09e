// Checks of wrong requests: each is refused or fails with a message, and none is met with silence.
#include <fcntl.h>

#include "device.h"

namespace conformance {

namespace {

// A request to be changed; its first input and its first output.
struct Wrong {
    Device& device;
    const Configuration& info;
    OfflineRequestInfo& request;
    device::StreamBuffer &in, &out;
};

enum class Expect { kFailure, kBetterFailure, kAnswer };

Verdict Judge(Session& session, const Answer& sent, Expect expect) {
    if (!sent.Ok()) return sent.MustBeRefused();
    const Verdict good = session.AwaitResult(sent, "an answer");
    if (Failed(session.All(), sent.number)) return {};
    if (!good.Good() || expect == Expect::kAnswer) return good;
    if (expect == Expect::kBetterFailure) return Warn("a result with good buffers");
    return Fail("a refusal, an error message or a broken buffer", Text(session.All()));
}

// Sends a request with a change, and a right one afterwards.
Run Sends(const std::function<void(Wrong)>& change, Expect expect = Expect::kFailure) {
    return OnStreams([=](Device& device, Session& session, const Configuration& info) {
        OfflineRequestInfo request = device.Request(info);
        change({device, info, request, request.inFrameInfos[0].buffers[0],
                request.outputBuffers[0]});
        const Verdict verdict = Judge(session, session.Process(std::move(request)), expect);
        if (verdict.outcome == Outcome::kFail) return verdict;
        const Verdict next = session.Exchange(info, "a right request's result afterwards", 100);
        return next.Good() ? verdict : next;
    });
}

Check Refused(const std::string& name, const std::string& what,
              const std::function<void(Wrong)>& change) {
    return {"requests." + name, what + " is refused.", Sends(change)};
}

NativeHandle NoBuffer() {
    NativeHandle handle;
    handle.fds.emplace_back(open("/dev/null", O_RDWR | O_CLOEXEC));
    handle.ints = {1, 2, 3};
    return handle;
}

// Of half the stream's rows and bytes.
NativeHandle SmallBuffer(Device& device, Stream stream) {
    stream.height /= 2;
    stream.bufferSize /= 2;
    return device.pool.Get(stream).Handle();
}

Verdict RefusesNone(Device&, Session& session, const Configuration&) {
    return session.Process(std::vector<OfflineRequestInfo>()).MustBeRefused();
}

Verdict RefusesBeforeStreams(Device& device, Session& session) {
    if (device.Working() == nullptr) return Skip("no mode brings results");
    const Answer sent = session.Process(device.Request(device.Working()->info));
    return Judge(session, sent, Expect::kFailure);
}

// With numbers of their own, as a call returns only one.
Verdict AnswersTenInACall(Device& device, Session& session, const Configuration& info) {
    std::vector<OfflineRequestInfo> requests;
    for (int i = 0; i < 10; ++i) {
        requests.push_back(device.Request(info, 100 * i));
        requests.back().frameNumber = 1000 + i;
    }
    const Answer answer = session.Process(std::move(requests));
    return answer.Ok() ? session.AwaitEnds(10) : answer.MustBeRefused();
}

Verdict AnswersTenCalls(Device& device, Session& session, const Configuration& info) {
    size_t taken = 0;
    for (int i = 0; i < 10; ++i) {
        const Answer answer = session.Process(device.Request(info, 100 * i));
        if (!answer.MustReturn().Good()) return answer.MustReturn();
        taken += answer.Ok();
    }
    return session.AwaitEnds(taken);
}

// Not of an output's format.
NativeHandle OtherFormat(Device& device) {
    return device.pool.Get(ConfigurationOf(kB2Y).streams[0]).Handle();
}

}  // namespace

Checks RequestChecks() {
    constexpr Expect kBetter = Expect::kBetterFailure;
    return {{"requests.before-streams", "A request before the streams is refused.",
             OnSession(RefusesBeforeStreams)},
            {"requests.none", "An empty list of requests is refused.", OnStreams(RefusesNone)},
            Refused("output-stream", "An output of an unknown stream",
                    [](Wrong w) { w.out.streamId = 77; }),
            Refused("exchanged", "A request with input and output under each other's stream",
                    [](Wrong w) { std::swap(w.in.streamId, w.out.streamId); }),
            {"requests.buffer-id", "A buffer id of 0, which is no buffer's, is better refused.",
             Sends([](Wrong w) { w.out.bufferId = 0; }, kBetter)},
            Refused("no-input-handle", "An input without a handle",
                    [](Wrong w) { w.in.buffer = {}; }),
            Refused("no-output-handle", "An output without a handle",
                    [](Wrong w) { w.out.buffer = {}; }),
            Refused("foreign-handle", "A handle that is no graphics buffer",
                    [](Wrong w) { w.out.buffer = NoBuffer(); }),
            Refused("descriptor", "A descriptor that is not the buffer's memory",
                    [](Wrong w) { std::swap(w.in.buffer.fds[0], NoBuffer().fds[0]); }),
            Refused("small-output", "An output buffer smaller than its stream",
                    [](Wrong w) { w.out.buffer = SmallBuffer(w.device, w.info.streams.back()); }),
            Refused("small-input", "An input buffer smaller than its stream",
                    [](Wrong w) { w.in.buffer = SmallBuffer(w.device, w.info.streams[0]); }),
            Refused("format", "An output buffer of another format",
                    [](Wrong w) { w.out.buffer = OtherFormat(w.device); }),
            Refused("no-frames", "A request without input frames",
                    [](Wrong w) { w.request.inFrameInfos.clear(); }),
            Refused("extra-frame", "A request with an empty frame too many",
                    [](Wrong w) { w.request.inFrameInfos.emplace_back(); }),
            Refused("extra-output", "A request with an output too many",
                    [](Wrong w) { w.request.outputBuffers.emplace_back(); }),
            Refused("no-inputs", "A frame without buffers",
                    [](Wrong w) { w.request.inFrameInfos[0].buffers.clear(); }),
            Refused("no-outputs", "A request without outputs",
                    [](Wrong w) { w.request.outputBuffers.clear(); }),
            {"requests.no-metadata", "A request without metadata is answered.",
             Sends([](Wrong w) { w.request.inFrameInfos[0].metadata.clear(); }, Expect::kAnswer)},
            {"requests.metadata", "Metadata that is no blob is better refused.",
             Sends([](Wrong w) { w.request.inFrameInfos[0].metadata.assign(500, 0xee); }, kBetter)},
            {"requests.ten-in-one-call", "Ten requests in a call are refused, or each is answered.",
             OnStreams(AnswersTenInACall)},
            {"requests.ten-calls", "Ten requests in a row are each refused or answered.",
             OnStreams(AnswersTenCalls)}};
}

}  // namespace conformance
