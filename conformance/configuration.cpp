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

template <Mode kMode>
Verdict Takes(Device& device) {
    if (!device.CanOpen()) return Skip("see session.open");
    const Answer& answer = device.Plain(kMode).configured;
    std::vector<int32_t> listed;
    device.ListModes(&listed);
    if (answer.Ok()) return {};
    if (!answer.Refused()) return Fail("OK or a refusal", answer.Text());
    if (std::count(listed.begin(), listed.end(), kMode) == 0) {
        return Skip("not claimed: " + answer.Text());
    }
    return Fail("OK, as getSupportedOpModes lists the mode", answer.Text());
}

Verdict TakesOneMode(Device& device) {
    if (!device.CanOpen()) return Skip("see session.open");
    return Require(!device.Claimed().empty(), "the streams of B2Y, Y2J or MMF taken",
                   device.Plain(kB2Y).configured.Text());
}

// The changed streams have to be refused, and the right ones taken then. Of the first mode that is
// taken, or of `mode`.
Run Try(const Configuration& good, const Change& change) {
    return OnSession([=](Device&, Session& session) -> Verdict {
        Configuration info = good;
        change({info, info.streams.front(), info.streams.back()});
        const Answer answer = session.Configure(info);
        if (!answer.MustReturn().Good()) return answer.MustReturn();
        const Answer right = session.Configure(good);
        if (!right.Ok()) return right.MustSucceed("the right streams taken afterwards");
        return answer.MustBeRefused();
    });
}

// Of the first mode that is taken.
Run Refuses(const Change& change) {
    return [=](Device& device) {
        const auto claimed = device.Claimed();
        return claimed.empty() ? Skip("no mode is taken: see configuration.some-mode")
                               : Try(claimed[0]->info, change)(device);
    };
}

Check Refused(const std::string& name, const std::string& what, const Change& change) {
    return {"configuration." + name, what + " is refused.", Refuses(change)};
}

Run RefusesOfY2J(const Change& change) {
    return [=](Device& device) {
        const PlainRun& run = device.Plain(kY2J);
        return run.configured.Ok() ? Try(run.info, change)(device) : Skip("Y2J is not taken");
    };
}

Verdict TakesThemAgain(Device&, Session& session, const Configuration& info) {
    const Answer again = session.Configure(info);
    return again.Ok() ? session.Exchange(info, "a result with the same streams configured again")
                      : again.MustSucceed("the same streams taken again");
}

Verdict AnswersInFlight(Device& device, Session& session, const Configuration& info) {
    const Answer first = session.Process(device.Request(info));
    const Answer second = session.Process(device.Request(info, 100));
    const Answer again = session.Configure(info);
    if (!again.MustReturn().Good()) return again.MustReturn();
    return session.AwaitEnds(size_t{first.Ok()} + size_t{second.Ok()});
}

}  // namespace

Checks ConfigurationChecks() {
    return {{"configuration.some-mode", "The streams of B2Y, Y2J or MMF are taken.", TakesOneMode},
            {"configuration.b2y", "The streams of B2Y are taken, if the mode is claimed.",
             Takes<kB2Y>},
            {"configuration.y2j", "The streams of Y2J are taken, if the mode is claimed.",
             Takes<kY2J>},
            {"configuration.mmf", "The streams of MMF are taken, if the mode is claimed.",
             Takes<kMMF>},
            Refused("input-format", "Another input format",
                    [](Set s) { s.in.format = PixelFormat::RGBA_8888; }),
            Refused("output-format", "Another output format",
                    [](Set s) { s.out.format = PixelFormat::RAW16; }),
            Refused("zero-width", "A width of 0", [](Set s) { s.out.width = 0; }),
            Refused("zero-height", "A height of 0", [](Set s) { s.in.height = 0; }),
            Refused("negative-width", "A negative width", [](Set s) { s.in.width = -4096; }),
            Refused("negative-height", "A negative height", [](Set s) { s.out.height = -3000; }),
            Refused("huge-size", "A size of 2147483647 x 2147483647",
                    [](Set s) { s.out.width = s.out.height = INT32_MAX; }),
            Refused("no-input", "A set without the first input",
                    [](Set s) { s.info.streams.erase(s.info.streams.begin()); }),
            Refused("no-output", "A set without output", [](Set s) { s.info.streams.pop_back(); }),
            {"configuration.no-streams", "An empty list is refused in these modes.",
             Refuses([](Set s) { s.info.streams.clear(); })},
            Refused("extra-input", "An input more than the mode takes",
                    [](Set s) {
                        s.in.id = 9;
                        s.info.streams.insert(s.info.streams.begin(),
                                              ConfigurationOf(kB2Y).streams[0]);
                    }),
            Refused("exchanged", "A set with input and output exchanged",
                    [](Set s) { std::swap(s.in.streamType, s.out.streamType); }),
            Refused("direction", "A stream that is neither input nor output",
                    [](Set s) { s.out.streamType = StreamType(7); }),
            Refused("same-id", "A set with two streams of one id",
                    [](Set s) { s.out.id = s.in.id; }),
            Refused("unknown-mode", "Operation mode 99", [](Set s) { s.info.opMode = 99; }),
            Refused("negative-mode", "Operation mode -1", [](Set s) { s.info.opMode = -1; }),
            Refused("other-streams", "The set of another mode",
                    [](Set s) { s.info.opMode = s.info.opMode == kY2J ? kB2Y : kY2J; }),
            {"configuration.blob-size-zero", "A BLOB stream of size 0 is refused.",
             RefusesOfY2J([](Set s) { s.out.bufferSize = 0; })},
            {"configuration.blob-size-negative", "A BLOB stream of negative size is refused.",
             RefusesOfY2J([](Set s) { s.out.bufferSize = -24000000; })},
            {"configuration.again", "The same streams are taken again, and a frame works then.",
             OnStreams(TakesThemAgain)},
            {"configuration.in-flight",
             "Frames in flight are answered whatever is configured then.",
             OnStreams(AnswersInFlight)}};
}

}  // namespace conformance
