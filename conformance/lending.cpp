// Checks of the buffers that the service borrows from its client, and of fences.
#include <sys/eventfd.h>

#include <algorithm>
#include <thread>

#include "device.h"

namespace conformance {

namespace {

Verdict ReturnsOnlyLent(const Events& events) {
    const auto lent = BuffersOf(Of(events, Event::kAsked));
    for (const BufferMark& buffer : BuffersOf(Of(events, Event::kReturned))) {
        if (std::count(lent.begin(), lent.end(), buffer) > 0) continue;
        return Fail("only buffers given back that were lent", Text(buffer));
    }
    return {};
}

Verdict ReturnsOnce(const Events& events) {
    const auto returned = BuffersOf(Of(events, Event::kReturned));
    for (const BufferMark& buffer : BuffersOf(Of(events, Event::kAsked))) {
        const auto times = std::count(returned.begin(), returned.end(), buffer);
        if (times == 1) continue;
        return Fail(Text(buffer) + " given back once before the close", Say(times, " times"));
    }
    return {};
}

const Need kBorrowing = {&PlainRun::BorrowsAndWorks, "no mode with a result asks for buffers"};

// A frame with another answer than it wants.
Run Copes(Lend lend) {
    const auto copes = [=](Session& session) {
        session.client->lend = lend;
        const Answer sent = session.Process(session.Request());
        const Verdict answered = session.AwaitAnswer(sent, Outcome::kOk);
        session.Close();
        if (sent.Refused() || !answered.Good()) return answered;
        const Verdict strays = ReturnsOnlyLent(session.All());
        return strays.Good() ? ReturnsOnce(session.All()) : strays;
    };
    return OnStreams(copes, kBorrowing);
}

Verdict ReturnsBeforeClose(Session& session) {
    // The close has to come after the service has borrowed.
    session.Process(session.Request(300));
    const auto asked = [](const Events& events) { return !Of(events, Event::kAsked).empty(); };
    session.client->WaitFor(asked, kSecond);
    const Verdict closed = ClosesInFlight(session);
    return closed.Good() ? ReturnsOnce(session.All()) : closed;
}

// Looks whether a frame is done before its fence is signalled.
Run WaitsFor(bool input) {
    return OnStreams([=](Session& session) -> Verdict {
        const ndk::ScopedFileDescriptor fence(eventfd(0, EFD_CLOEXEC));
        bool done = false;
        Requests requests = session.Request();
        auto& request = requests[0];
        auto& buffer = input ? request.inFrameInfos[0].buffers[0] : request.outputBuffers[0];
        buffer.acquireFence = FenceOf(fence.get());
        std::thread signaller([&] {  // as the call itself may wait
            done = session.client->WaitFor(
                    [](const Events& events) { return !Of(events, Event::kResult).empty(); },
                    kSecond);
            eventfd_write(fence.get(), 1);
        });
        const Answer sent = session.Process(std::move(requests));
        signaller.join();
        if (sent.Refused()) return Skip("a fence is refused: " + sent.Text());
        if (done) return Fail("no result before the fence", Text(session.All()));
        return session.AwaitResult(sent, "after the fence a result");
    });
}

Verdict ClosesWhileWaiting(Session& session) {
    const ndk::ScopedFileDescriptor fence(eventfd(0, EFD_CLOEXEC));
    Requests requests = session.Request();
    requests[0].inFrameInfos[0].buffers[0].acquireFence = FenceOf(fence.get());
    const Answer sent = session.Process(std::move(requests));
    const Answer closed = session.Close();
    eventfd_write(fence.get(), 1);
    if (!sent.MustReturn().Good()) return sent.MustReturn();
    return closed.MustSucceed("the session closed within 5 s");
}

constexpr char kNone[] = "the service asks for no buffers";

}  // namespace

void JudgeLending(PlainRun* run) {
    run->Expect("release", FencesSignal(run->events),
                "release fences of " + run->Mode() + " signalled within 5 s", "one is not");
    if (!run->Borrows()) return;
    for (const BufferMark& buffer : BuffersOf(Of(run->events, Event::kReturned))) {
        run->Note("uses-it",
                  Better(buffer.good, Text(buffer) + " was given back as it was: was it needed?"));
    }
    run->Note("only-lent", ReturnsOnlyLent(run->events));
    run->Note("once", ReturnsOnce(run->events));
}

const Checks kLendingChecks = {
        Noted("uses-it", "A buffer that is asked for is better used.", kNone),
        Noted("only-lent", "Only buffers that were lent are given back.", kNone),
        Noted("once", "Each lent buffer is given back once, before the close is answered.", kNone),
        {"close-in-flight", "With frames in flight all come back before the close is answered.",
         OnStreams(ReturnsBeforeClose, kBorrowing)},
        {"no-answer", "A frame is answered though nothing is lent.", Copes(Lend::kNoAnswers)},
        {"error-value", "A frame is answered though an error comes for buffers.",
         Copes(Lend::kErrorValue)},
        {"too-few", "A frame is answered though too few are lent; they come back.",
         Copes(Lend::kOneTooFew)},
        {"empty-handles", "A frame is answered though lent buffers have no handle.",
         Copes(Lend::kEmptyHandles)},
};

const Checks kFenceChecks = {
        {"input", "An input is read only after its acquire fence.", WaitsFor(true)},
        {"output", "An output is written only after its acquire fence.", WaitsFor(false)},
        {"close", "A session closes while a frame waits for a fence.",
         OnStreams(ClosesWhileWaiting)},
        Noted("release", "Release fences that a result carries are signalled in the end."),
};

}  // namespace conformance
