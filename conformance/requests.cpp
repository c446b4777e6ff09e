// Checks of wrong requests: each is refused or fails with a message, and none is met with silence.
#include <fcntl.h>
#include <unistd.h>

#include <functional>

#include "plain_run.h"

namespace conformance {

namespace {

using Edit = std::function<void(OfflineRequestInfo&, Device&, const OfflineSessionConfigureInfo&)>;

enum class Expect {
    kFailure,        // refused by status, error message or a result with a broken buffer
    kAnswer,         // any of them or a good result
    kBetterFailure,  // a good result is a warning
};

// What came of a request that was sent.
Verdict Judge(Session& session, const Answer& answer, Expect expect) {
    if (answer.Refused()) return {};
    if (!answer.Ok()) return Fail("a status", answer.Text());
    const std::string problem = session.AwaitResult(answer.number);
    const bool failed = Failed(session.Client().All(), answer.number);
    if (failed) return {};
    const std::string came =
            problem.empty() ? "OK, then a result with good buffers" : "OK, then " + problem;
    if (!problem.empty() || expect == Expect::kFailure) {
        return Fail(expect == Expect::kFailure ? "a refusal, an error message or a broken buffer"
                                               : "a refusal, an error message or a result",
                    came);
    }
    return expect == Expect::kAnswer ? Verdict() : Warn(came);
}

// Sends a request with a change, and afterwards a right one.
Verdict Wrong(Device& device, Expect expect, const Edit& change) {
    return WithStreams(device, [&](Session& session, const auto& info) -> Verdict {
        OfflineRequestInfo request = device.Request(info);
        change(request, device, info);
        const Answer answer = session.Process(std::move(request));
        const Verdict verdict = Judge(session, answer, expect);
        if (verdict.outcome == Outcome::kFail) return verdict;
        const Answer right = session.Process(device.Request(info, 100));
        const std::string problem = right.Ok() ? session.AwaitResult(right.number) : right.Text();
        return problem.empty() ? verdict
                               : Fail("the result of a right request afterwards", problem);
    });
}

Verdict Wrong(Device& device, const Edit& change) {
    return Wrong(device, Expect::kFailure, change);
}

device::StreamBuffer& InputOf(OfflineRequestInfo& request) {
    return request.inFrameInfos[0].buffers[0];
}

device::StreamBuffer& OutputOf(OfflineRequestInfo& request) {
    return request.outputBuffers[0];
}

ndk::ScopedFileDescriptor OpenNull() {
    return ndk::ScopedFileDescriptor(open("/dev/null", O_RDWR | O_CLOEXEC));
}

// A handle of a buffer of half the stream's height, or half its bytes.
NativeHandle SmallerBuffer(Device& device, Stream stream) {
    stream.height /= 2;
    stream.bufferSize /= 2;
    return device.pool.Get(stream).Handle();
}

NativeHandle BufferOfAnotherFormat(Device& device, Stream stream) {
    stream.format =
            stream.format == PixelFormat::RAW10 ? PixelFormat::YCBCR_420_888 : PixelFormat::RAW10;
    return device.pool.Get(stream).Handle();
}

Verdict RefusesBeforeStreams(Device& device) {
    Mode mode;
    if (!device.Working(&mode)) return Skip("no mode brings results");
    return WithSession(device, [&](Session& session) -> Verdict {
        return Judge(session, session.Process(device.Request(device.Plain(mode).info)),
                     Expect::kFailure);
    });
}

Verdict RefusesNoRequests(Device& device) {
    return WithStreams(device, [&](Session& session, const auto&) -> Verdict {
        const Answer answer = session.Process(std::vector<OfflineRequestInfo>());
        return answer.Refused() ? Verdict() : Fail("a refusal", answer.Text());
    });
}

bool Told(const Events& events, int32_t frame) {
    return !Outputs(events, frame).empty() || Failed(events, frame);
}

// Ten requests in one call, with frame numbers of their own as a call returns only one.
Verdict AnswersTenInOneCall(Device& device) {
    return WithStreams(device, [&](Session& session, const auto& info) -> Verdict {
        std::vector<OfflineRequestInfo> requests;
        for (int i = 0; i < 10; ++i) {
            requests.push_back(device.Request(info, 100 * i));
            requests.back().frameNumber = 1000 + i;
        }
        const Answer answer = session.Process(std::move(requests));
        if (answer.Refused()) return {};
        if (!answer.Ok()) return Fail("a status", answer.Text());
        for (int32_t frame = 1000; frame < 1010; ++frame) {
            const auto told = [&](const Events& events) { return Told(events, frame); };
            if (session.Client().WaitFor(told, kWait)) continue;
            return Fail(Say("result or error of frame ", frame, " of 1000 to 1009"),
                        "OK, then within 5 s: " + Summary(session.Client().All()));
        }
        return {};
    });
}

Verdict AnswersTenCalls(Device& device) {
    return WithStreams(device, [&](Session& session, const auto& info) -> Verdict {
        std::vector<int32_t> frames;
        for (int i = 0; i < 10; ++i) {
            const Answer answer = session.Process(device.Request(info, 100 * i));
            if (!answer.Ok() && !answer.Refused()) return Fail("a status", answer.Text());
            if (answer.Ok()) frames.push_back(answer.number);
        }
        for (const int32_t frame : frames) {
            const auto told = [&](const Events& events) { return Told(events, frame); };
            if (session.Client().WaitFor(told, kWait)) continue;
            return Fail(Say("result or error of each of ", frames.size(), " frames in flight"),
                        Say("none of frame ", frame, " within 5 s of the one before"));
        }
        return {};
    });
}

}  // namespace

Checks RequestChecks() {
    constexpr char kStreams[] =
            "Look each stream id up among the configured ones; one buffer of each.";
    constexpr char kHandle[] =
            "Import every handle in the call, and refuse what the mapper refuses.";
    constexpr char kFit[] = "Ask the mapper for size and format of each buffer, and compare.";
    constexpr char kFrames[] = "Compare the number of input frames with what the mode takes.";
    constexpr char kMetadata[] = "Validate the blob with the vector's length before reading it.";
    return {
            {"requests.before-streams", "A request before the streams are configured is refused.",
             "Test whether there are streams first.", RefusesBeforeStreams},
            {"requests.none", "An empty list of requests is refused.",
             "Test the list first: there is no frame number to return.", RefusesNoRequests},
            {"requests.wrong-output-stream", "An output buffer of an unknown stream is refused.",
             kStreams,
             [](Device& d) {
                 return Wrong(d, [](auto& r, auto&, auto&) { OutputOf(r).streamId = 77; });
             }},
            {"requests.wrong-input-stream", "An input buffer of an unknown stream is refused.",
             kStreams,
             [](Device& d) {
                 return Wrong(d, [](auto& r, auto&, auto&) { InputOf(r).streamId = -5; });
             }},
            {"requests.exchanged-streams",
             "An input buffer under the output's stream id is refused.", kStreams,
             [](Device& d) {
                 return Wrong(d, [](auto& r, auto&, auto&) {
                     std::swap(InputOf(r).streamId, OutputOf(r).streamId);
                 });
             }},
            {"requests.buffer-id-zero",
             "A buffer with the id 0, which stands for none, is better refused.",
             "Refuse the id 0.",
             [](Device& d) {
                 return Wrong(d, Expect::kBetterFailure,
                              [](auto& r, auto&, auto&) { OutputOf(r).bufferId = 0; });
             }},
            {"requests.no-input-handle", "An input buffer without a handle is refused.", kHandle,
             [](Device& d) {
                 return Wrong(d, [](auto& r, auto&, auto&) { InputOf(r).buffer = {}; });
             }},
            {"requests.no-output-handle", "An output buffer without a handle is refused.", kHandle,
             [](Device& d) {
                 return Wrong(d, [](auto& r, auto&, auto&) { OutputOf(r).buffer = {}; });
             }},
            {"requests.foreign-handle", "A handle that is no graphics buffer is refused.", kHandle,
             [](Device& d) {
                 return Wrong(d, [](auto& r, auto&, auto&) {
                     OutputOf(r).buffer = {};
                     OutputOf(r).buffer.fds.push_back(OpenNull());
                     OutputOf(r).buffer.ints = {1, 2, 3};
                 });
             }},
            {"requests.other-descriptor",
             "A handle whose descriptor is not the buffer's memory is refused.", kHandle,
             [](Device& d) {
                 return Wrong(d,
                              [](auto& r, auto&, auto&) { InputOf(r).buffer.fds[0] = OpenNull(); });
             }},
            {"requests.small-output", "An output buffer smaller than its stream is refused.", kFit,
             [](Device& d) {
                 return Wrong(d, [](auto& r, Device& device, auto& info) {
                     OutputOf(r).buffer = SmallerBuffer(device, info.streams.back());
                 });
             }},
            {"requests.small-input", "An input buffer smaller than its stream is refused.", kFit,
             [](Device& d) {
                 return Wrong(d, [](auto& r, Device& device, auto& info) {
                     InputOf(r).buffer = SmallerBuffer(device, info.streams.front());
                 });
             }},
            {"requests.other-format",
             "An input buffer of another format than its stream is refused.", kFit,
             [](Device& d) {
                 return Wrong(d, [](auto& r, Device& device, auto& info) {
                     InputOf(r).buffer = BufferOfAnotherFormat(device, info.streams.front());
                 });
             }},
            {"requests.no-frames", "A request without input frames is refused.", kFrames,
             [](Device& d) {
                 return Wrong(d, [](auto& r, auto&, auto&) { r.inFrameInfos.clear(); });
             }},
            {"requests.extra-frame", "A request with an input frame too many is refused.", kFrames,
             [](Device& d) {
                 return Wrong(d, [](auto& r, Device& device, auto& info) {
                     r.inFrameInfos.push_back(std::move(device.Request(info, 50).inFrameInfos[0]));
                 });
             }},
            {"requests.no-inputs", "A request whose input frame has no buffers is refused.",
             kStreams,
             [](Device& d) {
                 return Wrong(d, [](auto& r, auto&, auto&) { r.inFrameInfos[0].buffers.clear(); });
             }},
            {"requests.no-outputs", "A request without output buffers is refused.", kStreams,
             [](Device& d) {
                 return Wrong(d, [](auto& r, auto&, auto&) { r.outputBuffers.clear(); });
             }},
            {"requests.nothing", "A request with neither frames nor buffers is refused.", kFrames,
             [](Device& d) {
                 return Wrong(d, [](auto& r, auto&, auto&) {
                     r = {};
                     r.frameNumber = -1;
                 });
             }},
            {"requests.extra-output", "A second buffer of one output stream is refused.", kStreams,
             [](Device& d) {
                 return Wrong(d, [](auto& r, Device& device, auto& info) {
                     r.outputBuffers.push_back(
                             std::move(device.Request(info, 50).outputBuffers[0]));
                 });
             }},
            {"requests.no-metadata", "A request without metadata is answered.",
             "Use defaults for what the metadata would say, or refuse.",
             [](Device& d) {
                 return Wrong(d, Expect::kAnswer, [](auto& r, auto&, auto&) {
                     for (auto& frame : r.inFrameInfos) frame.metadata.clear();
                 });
             }},
            {"requests.corrupt-metadata", "Metadata that is no blob is better refused.", kMetadata,
             [](Device& d) {
                 return Wrong(d, Expect::kBetterFailure, [](auto& r, auto&, auto&) {
                     r.inFrameInfos[0].metadata.assign(500, 0xee);
                 });
             }},
            {"requests.short-metadata", "Metadata cut off after its size field is better refused.",
             kMetadata,
             [](Device& d) {
                 return Wrong(d, Expect::kBetterFailure,
                              [](auto& r, auto&, auto&) { r.inFrameInfos[0].metadata.resize(4); });
             }},
            {"requests.ten-in-one-call",
             "Ten requests in one call are refused, or each is answered.",
             "Check and queue all of them, or refuse the call as a whole.", AnswersTenInOneCall},
            {"requests.ten-calls", "Ten requests in a row are each refused or answered.",
             "Queue them, and refuse with a status what the queue does not hold.", AnswersTenCalls},
    };
}

}  // namespace conformance
