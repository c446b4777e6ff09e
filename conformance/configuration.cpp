// Checks of the stream configuration: what is taken, what is refused, and what works afterwards.
#include <algorithm>

#include "device.h"

namespace conformance {

namespace {

// A stream set to be changed; its first input and its output.
struct Set {
    Configuration& info;
    Stream &in, &out;
};
using Change = std::function<void(Set)>;

template <size_t kIndex>  // in kModes
Verdict Takes(Device& device) {
    if (!device.CanOpen()) return Skip("see session.open");
    const Answer& answer = device.PlainRuns()[kIndex].configured;
    if (answer.Ok()) return {};
    if (!answer.Refused()) return Fail("OK or a refusal", answer.Text());
    const auto listed = device.ListModes().modes;
    const bool claimed = std::count(listed.begin(), listed.end(), kModes[kIndex]) > 0;
    return claimed ? Fail("OK, as getSupportedOpModes lists the mode", answer.Text())
                   : Skip("not claimed: " + answer.Text());
}

Verdict TakesOneMode(Device& device) {
    if (!device.CanOpen()) return Skip("see session.open");
    return Require(device.Find({&PlainRun::Taken}), "the streams of B2Y, Y2J or MMF taken",
                   device.PlainRuns()[0].configured.Text());
}

Verdict TakesListedModes(Session& session) {
    const auto listed = session.device.ListModes().modes;
    if (listed.empty()) return Skip("no modes are listed");
    for (int32_t mode = 0; mode <= 5; ++mode) {
        if (std::count(listed.begin(), listed.end(), mode) > 0) continue;
        Configuration info = ConfigurationOf(mode == kY2J || mode == kMMF ? Mode(mode) : kB2Y);
        info.opMode = mode;
        const Answer answer = session.Configure(info);
        if (answer.Ok()) return Warn(Say("mode ", mode, " is taken, but not listed"));
        if (!answer.Refused()) return answer.MustReturn();
    }
    return {};
}

const Need kTaken = {&PlainRun::Taken, "no mode is taken: see configuration.some-mode"};
const Need kTakenY2J = {&PlainRun::Taken, "Y2J is not taken", kY2J};

// The changed streams have to be refused, or it is `taken`, and the right ones taken then.
Check Wrong(const std::string& name, const std::string& what, const Change& change,
            Outcome taken = Outcome::kFail, const Need& need = kTaken) {
    const auto refuses = [=](Session& session) {
        const Configuration right = session.info;
        Configuration wrong = right;
        change({wrong, wrong.streams.front(), wrong.streams.back()});
        const Answer answer = session.Configure(wrong);
        if (!answer.MustReturn().Good()) return answer.MustReturn();
        const Answer next = session.Configure(right);
        if (!next.Ok()) return next.MustSucceed("the right streams taken afterwards");
        if (answer.Ok() && taken == Outcome::kWarn) return Warn("it is taken");
        return answer.MustBeRefused();
    };
    const bool must = taken == Outcome::kFail;
    const std::string rule = what + (must ? " is refused." : " is better refused.");
    return {name, rule, OnSession(refuses, need)};
}

Verdict TakesThemAgain(Session& session) {
    const Answer again = session.Configure(session.info);
    return again.Ok() ? session.Exchange("a result with the same streams configured again")
                      : again.MustSucceed("the same streams taken again");
}

Verdict AnswersInFlight(Session& session) {
    const Answer first = session.Process(session.Request());
    const Answer second = session.Process(session.Request(100));
    const Answer again = session.Configure(session.info);
    if (!again.MustReturn().Good()) return again.MustReturn();
    return session.AwaitEnds(size_t{first.Ok()} + size_t{second.Ok()});
}

constexpr PixelFormat kOther = PixelFormat::RAW16;  // of no stream

}  // namespace

const Checks kConfigurationChecks = {
        {"some-mode", "The streams of B2Y, Y2J or MMF are taken.", TakesOneMode},
        {"b2y", "The streams of B2Y are taken, if the mode is claimed.", Takes<0>},
        {"y2j", "The streams of Y2J are taken, if the mode is claimed.", Takes<1>},
        {"mmf", "The streams of MMF are taken, if the mode is claimed.", Takes<2>},
        {"listed", "A mode that getSupportedOpModes leaves out is better refused.",
         OnSession(TakesListedModes)},
        Wrong("input-format", "Another input format", [](Set s) { s.in.format = kOther; }),
        Wrong("output-format", "Another output format", [](Set s) { s.out.format = kOther; }),
        Wrong("zero-width", "A width of 0", [](Set s) { s.out.width = 0; }),
        Wrong("zero-height", "A height of 0", [](Set s) { s.in.height = 0; }),
        Wrong("negative-width", "A negative width", [](Set s) { s.in.width = -4096; }),
        Wrong("negative-height", "A negative height", [](Set s) { s.out.height = -3000; }),
        Wrong("huge-size", "A size of 2147483647 x 2147483647",
              [](Set s) { s.out.width = s.out.height = INT32_MAX; }),
        Wrong(
                "usage", "A usage of 0, of no access at all,",
                [](Set s) { s.in.usage = BufferUsage::CPU_READ_NEVER; }, Outcome::kWarn),
        Wrong("no-input", "A set without the first input",
              [](Set s) { s.info.streams.erase(s.info.streams.begin()); }),
        Wrong("no-output", "A set without output", [](Set s) { s.info.streams.pop_back(); }),
        Wrong("no-streams", "An empty list in these modes", [](Set s) { s.info.streams.clear(); }),
        Wrong("extra-input", "An input more than the mode takes",
              [](Set s) {
                  s.in.id = 9;
                  s.info.streams.insert(s.info.streams.begin(), ConfigurationOf(kB2Y).streams[0]);
              }),
        Wrong("exchanged", "A set with input and output exchanged",
              [](Set s) { std::swap(s.in.streamType, s.out.streamType); }),
        Wrong("direction", "A stream that is neither input nor output",
              [](Set s) { s.out.streamType = StreamType(7); }),
        Wrong("same-id", "A set with two streams of one id", [](Set s) { s.out.id = s.in.id; }),
        Wrong("unknown-mode", "Operation mode 99", [](Set s) { s.info.opMode = 99; }),
        Wrong("negative-mode", "Operation mode -1", [](Set s) { s.info.opMode = -1; }),
        Wrong("other-streams", "The set of another mode",
              [](Set s) { s.info.opMode = s.info.opMode == kY2J ? kB2Y : kY2J; }),
        Wrong(
                "blob-size-zero", "A BLOB stream of size 0", [](Set s) { s.out.bufferSize = 0; },
                Outcome::kFail, kTakenY2J),
        Wrong(
                "blob-size-negative", "A BLOB stream of negative size",
                [](Set s) { s.out.bufferSize = -24000000; }, Outcome::kFail, kTakenY2J),
        {"again", "The same streams are taken again, and a frame works then.",
         OnStreams(TakesThemAgain)},
        {"in-flight", "Frames in flight are answered whatever is configured then.",
         OnStreams(AnswersInFlight)},
};

}  // namespace conformance
