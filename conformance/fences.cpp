// Checks of acquire and release fences. A fence here is an eventfd, which is readable once it is
// signalled, as a sync fence is.
#include <sys/eventfd.h>
#include <unistd.h>

#include <thread>

#include "device.h"

namespace conformance {

namespace {

class Fence {
  public:
    NativeHandle Handle() const {
        NativeHandle handle;
        handle.fds.push_back(m_fence.dup());
        return handle;
    }
    void Signal() { eventfd_write(m_fence.get(), 1); }

  private:
    const ndk::ScopedFileDescriptor m_fence{eventfd(0, EFD_CLOEXEC)};
};

// Looks whether a frame is done before its fence is signalled.
Run WaitsFor(bool input) {
    return OnStreams([=](Device& device, Session& session, const Configuration& info) -> Verdict {
        Fence fence;
        bool done = false;
        OfflineRequestInfo request = device.Request(info);
        auto& buffer = input ? request.inFrameInfos[0].buffers[0] : request.outputBuffers[0];
        buffer.acquireFence = fence.Handle();
        std::thread signaller([&] {  // as the call itself may wait
            done = session.client->WaitFor(
                    [](const Events& events) { return !Of(events, Event::kResult).empty(); },
                    device.Working()->Patience());
            fence.Signal();
        });
        const Answer sent = session.Process(std::move(request));
        signaller.join();
        if (sent.Refused()) return Skip("a fence is refused: " + sent.Text());
        if (done) return Fail("no result before the fence", Text(session.All()));
        return session.AwaitResult(sent, "after the fence a result");
    });
}

Verdict ClosesWhileWaiting(Device& device, Session& session, const Configuration& info) {
    Fence never;
    OfflineRequestInfo request = device.Request(info);
    request.inFrameInfos[0].buffers[0].acquireFence = never.Handle();
    const Answer sent = session.Process(std::move(request));
    const Answer closed = session.Close();
    never.Signal();
    if (!sent.MustReturn().Good()) return sent.MustReturn();
    return closed.MustSucceed("the session closed within 5 s");
}

Verdict SignalsReleaseFences(Device& device) {
    for (const PlainRun* run : device.Claimed()) {
        if (!FencesSignal(run->events)) {
            return Fail("release fences of " + run->Mode() + " signalled within 5 s", "one is not");
        }
    }
    return device.Claimed().empty() ? Skip("no mode is taken") : Verdict();
}

}  // namespace

Checks FenceChecks() {
    return {{"fences.input", "An input is read only after its acquire fence.", WaitsFor(true)},
            {"fences.output", "An output is written only after its acquire fence.",
             WaitsFor(false)},
            {"fences.close", "A session closes while a frame waits for a fence.",
             OnStreams(ClosesWhileWaiting)},
            {"fences.release", "Release fences that a result carries are signalled in the end.",
             SignalsReleaseFences}};
}

}  // namespace conformance
