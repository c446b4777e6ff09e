// Checks of the buffers that the service borrows from its client, and of fences.
#include <sys/eventfd.h>

#include <algorithm>
#include <thread>

#include "device.h"

namespace conformance {

namespace {

struct Borrowed {
    std::vector<BufferMark> lent, returned;
};

Borrowed BorrowedOf(const Events& events) {
    return {BuffersOf(Of(events, Event::kAsked)), BuffersOf(Of(events, Event::kReturned))};
}

bool Borrows(const PlainRun& run) {
    return std::any_of(run.events.begin(), run.events.end(), [](const Event& event) {
        return event.kind == Event::kAsked || event.kind == Event::kReturned;
    });
}

// Looks at what is asked for, lent and returned in the modes that do so, up to the first finding.
Run Borrowing(Verdict (*look)(const Borrowed&)) {
    const auto lookAtRun = [look](const PlainRun& run) -> std::optional<Verdict> {
        if (!Borrows(run)) return std::nullopt;
        return look(BorrowedOf(run.events));
    };
    return OnPlainRuns(lookAtRun, "the service asks for no buffers");
}

Verdict UsesWhatItAsksFor(const Borrowed& b) {
    for (const BufferMark& buffer : b.returned) {
        if (!buffer.good) return Warn(Text(buffer) + " was given back as it was: was it needed?");
    }
    return {};
}

Verdict ReturnsOnlyLent(const Borrowed& b) {
    for (const BufferMark& buffer : b.returned) {
        if (std::count(b.lent.begin(), b.lent.end(), buffer) > 0) continue;
        return Fail("only buffers given back that were lent", Text(buffer));
    }
    return {};
}

Verdict ReturnsOnce(const Borrowed& b) {
    for (const BufferMark& buffer : b.lent) {
        const auto times = std::count(b.returned.begin(), b.returned.end(), buffer);
        if (times == 1) continue;
        return Fail(Text(buffer) + " given back once before the close", Say(times, " times"));
    }
    return {};
}

Verdict Cope(Device& device, Session& session, const Configuration& info, Lend lend) {
    session.client->lend = lend;
    const Answer sent = session.Process(device.Request(info));
    if (sent.Refused()) return {};
    const Verdict good = session.AwaitResult(sent, "an answer");
    const bool failed = Failed(session.All(), sent.number);
    session.Close();
    if (!good.Good() && !failed) return good;
    const Verdict strays = ReturnsOnlyLent(BorrowedOf(session.All()));
    return strays.Good() ? ReturnsOnce(BorrowedOf(session.All())) : strays;
}

// On the streams of a mode that asks for buffers.
Run WhereBorrowed(const UseStreams& use) {
    return [=](Device& device) {
        for (const PlainRun* run : device.Claimed()) {
            if (run->Works() && Borrows(*run)) return OnStreams(use, run->info)(device);
        }
        return Skip("no mode with a result asks for buffers");
    };
}

// A frame with another answer than it wants.
Run Copes(Lend lend) {
    return WhereBorrowed([=](Device& device, Session& session, const Configuration& info) {
        return Cope(device, session, info, lend);
    });
}

Verdict ReturnsBeforeClose(Device& device, Session& session, const Configuration& info) {
    const Verdict closed = ClosesInFlight(device, session, info);
    return closed.Good() ? ReturnsOnce(BorrowedOf(session.All())) : closed;
}

// An eventfd is readable once it is signalled, as a sync fence is.
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
                    kQuiet);
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

Verdict SignalsReleaseFences(const PlainRun& run) {
    return Require(FencesSignal(run.events),
                   "release fences of " + run.Mode() + " signalled within 5 s", "one is not");
}

}  // namespace

Checks LendingChecks() {
    return {
            {"lending.uses-it", "A buffer that is asked for is better used.",
             Borrowing(UsesWhatItAsksFor)},
            {"lending.only-lent", "Only buffers that were lent are given back.",
             Borrowing(ReturnsOnlyLent)},
            {"lending.once", "Each lent buffer is given back once, before the close is answered.",
             Borrowing(ReturnsOnce)},
            {"lending.close-in-flight",
             "With frames in flight all come back before the close is answered.",
             WhereBorrowed(ReturnsBeforeClose)},
            {"lending.no-answer", "A frame is answered though nothing is lent.",
             Copes(Lend::kNoAnswers)},
            {"lending.error-value", "A frame is answered though an error comes for buffers.",
             Copes(Lend::kErrorValue)},
            {"lending.too-few", "A frame is answered though too few are lent; they come back.",
             Copes(Lend::kOneTooFew)},
            {"lending.empty-handles", "A frame is answered though lent buffers have no handle.",
             Copes(Lend::kEmptyHandles)},
    };
}

Checks FenceChecks() {
    return {{"fences.input", "An input is read only after its acquire fence.", WaitsFor(true)},
            {"fences.output", "An output is written only after its acquire fence.",
             WaitsFor(false)},
            {"fences.close", "A session closes while a frame waits for a fence.",
             OnStreams(ClosesWhileWaiting)},
            {"fences.release", "Release fences that a result carries are signalled in the end.",
             OnPlainRuns(SignalsReleaseFences)}};
}

}  // namespace conformance
