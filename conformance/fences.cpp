// Checks of acquire and release fences. A fence here is an eventfd, which is readable once it is
// signalled, as a sync fence is.
#include <sys/eventfd.h>
#include <unistd.h>

#include "plain_run.h"

namespace conformance {

namespace {

class Fence {
  public:
    Fence() : m_fence(eventfd(0, EFD_CLOEXEC)) {}

    NativeHandle Handle() const {
        NativeHandle handle;
        handle.fds.push_back(m_fence.dup());
        return handle;
    }

    void Signal() {
        const uint64_t one = 1;
        (void)!write(m_fence.get(), &one, sizeof(one));
    }

  private:
    const ndk::ScopedFileDescriptor m_fence;
};

// Sends a frame with an acquire fence, looks whether it is done without it, and signals it then.
Verdict WaitsFor(Device& device, bool input) {
    return WithStreams(device, [&](Session& session, const auto& info) -> Verdict {
        Fence fence;
        OfflineRequestInfo request = device.Request(info);
        auto& buffer = input ? request.inFrameInfos[0].buffers[0] : request.outputBuffers[0];
        buffer.acquireFence = fence.Handle();
        const auto sent = std::make_shared<OfflineRequestInfo>(std::move(request));
        // The call itself may wait for the fence: it is signalled from another thread.
        const SentFrame& plain = device.Plain(static_cast<Mode>(info.opMode)).frames[0];
        const auto usual =
                std::chrono::duration_cast<std::chrono::milliseconds>(plain.done - plain.sent);
        std::atomic<bool> done{false};
        std::thread signaller([&] {
            done = session.Client().WaitFor(
                    [](const Events& events) {
                        return std::any_of(events.begin(), events.end(), [](const Event& event) {
                            return event.kind == Event::kResult && !event.buffers.empty();
                        });
                    },
                    2 * usual + std::chrono::milliseconds(200));
            fence.Signal();
        });
        const Answer answer = session.Process(std::move(*sent));
        signaller.join();
        if (answer.Refused()) return Skip("a fence is refused: " + answer.Text());
        if (done)
            return Fail("no result before the fence is signalled", Summary(session.Client().All()));
        const std::string problem =
                answer.Ok() ? session.AwaitResult(answer.number) : answer.Text();
        return problem.empty() ? Verdict() : Fail("a result after the fence is signalled", problem);
    });
}

Verdict TakesASignalledFence(Device& device) {
    return WithStreams(device, [&](Session& session, const auto& info) -> Verdict {
        Fence fence;
        fence.Signal();
        OfflineRequestInfo request = device.Request(info);
        request.inFrameInfos[0].buffers[0].acquireFence = fence.Handle();
        request.outputBuffers[0].acquireFence = fence.Handle();
        const Answer answer = session.Process(std::move(request));
        if (answer.Refused()) return Skip("a fence is refused: " + answer.Text());
        const std::string problem =
                answer.Ok() ? session.AwaitResult(answer.number) : answer.Text();
        return problem.empty() ? Verdict() : Fail("a result", problem);
    });
}

Verdict ClosesWhileWaiting(Device& device) {
    return WithStreams(device, [&](Session& session, const auto& info) -> Verdict {
        Fence never;
        OfflineRequestInfo request = device.Request(info);
        request.inFrameInfos[0].buffers[0].acquireFence = never.Handle();
        const Answer sent = session.Process(std::move(request));
        const Answer closed = session.Close();
        never.Signal();
        if (sent.timedOut)
            return Fail("an answer to a request whose fence is not signalled", sent.Text());
        return closed.Ok() ? Verdict() : Fail("the session closed within 5 s", closed.Text());
    });
}

Verdict RefusesTwoDescriptors(Device& device) {
    return WithStreams(device, [&](Session& session, const auto& info) -> Verdict {
        Fence first, second;
        first.Signal();
        second.Signal();
        OfflineRequestInfo request = device.Request(info);
        request.outputBuffers[0].acquireFence = first.Handle();
        request.outputBuffers[0].acquireFence.fds.push_back(std::move(second.Handle().fds[0]));
        const Answer answer = session.Process(std::move(request));
        if (answer.Refused()) return {};
        const std::string problem =
                answer.Ok() ? session.AwaitResult(answer.number) : answer.Text();
        if (Failed(session.Client().All(), answer.number)) return {};
        return problem.empty() ? Warn("taken without a word")
                               : Fail("a refusal, an error message or a result", problem);
    });
}

Verdict SignalsReleaseFences(Device& device) {
    for (const Mode mode : device.Claimed()) {
        if (FencesSignal(device.Plain(mode).events)) continue;
        return Fail(Say("the release fences of ", NameOf(mode), "'s results signalled within 5 s"),
                    "one that is not");
    }
    return device.Claimed().empty() ? Skip("no mode is taken") : Verdict();
}

}  // namespace

Checks FenceChecks() {
    constexpr char kLock[] = "Give the acquire fence to the mapper's lock, which waits for it.";
    return {
            {"fences.input", "An input is read only after its acquire fence is signalled.", kLock,
             [](Device& d) { return WaitsFor(d, true); }},
            {"fences.output", "An output is written only after its acquire fence is signalled.",
             kLock, [](Device& d) { return WaitsFor(d, false); }},
            {"fences.signalled", "Fences that are signalled already do not matter.", kLock,
             TakesASignalledFence},
            {"fences.close", "A session can be closed while a frame waits for a fence.",
             "Wait for fences on the session's thread, and not for ever.", ClosesWhileWaiting},
            {"fences.two-descriptors", "An acquire fence of two descriptors is better refused.",
             "A fence has no or one descriptor.", RefusesTwoDescriptors},
            {"fences.release", "Each release fence that a result carries is signalled in the end.",
             "Signal it when the buffer is free, or send none.", SignalsReleaseFences},
    };
}

}  // namespace conformance
