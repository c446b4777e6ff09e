// Checks of the stream configuration: what is taken, what is refused, and what works afterwards.
#include <algorithm>

#include "plain_run.h"

namespace conformance {

namespace {

using Change = void (*)(OfflineSessionConfigureInfo&);

std::vector<int32_t> ListedModes(Device& device) {
    const auto modes = std::make_shared<std::vector<int32_t>>();
    const Answer answer = Bounded("getSupportedOpModes", [=, service = device.service](int32_t*) {
        return service->getSupportedOpModes(modes.get());
    });
    return answer.Ok() ? *modes : std::vector<int32_t>();
}

template <Mode kMode>
Verdict Takes(Device& device) {
    if (!device.CanOpen()) return Skip("see session.open");
    const Answer& answer = device.Plain(kMode).configured;
    if (answer.Ok()) return {};
    if (!answer.Refused()) return Fail("OK or a refusal", answer.Text());
    for (const int32_t listed : ListedModes(device)) {
        if (listed == static_cast<int32_t>(kMode)) {
            return Fail("OK, as getSupportedOpModes lists the mode", answer.Text());
        }
    }
    return Skip("not claimed: " + answer.Text());
}

Verdict TakesOneMode(Device& device) {
    if (!device.CanOpen()) return Skip("see session.open");
    if (!device.Claimed().empty()) return {};
    return Fail("the streams of B2Y, Y2J or MMF taken", device.Plain(Mode::kB2Y).configured.Text());
}

Verdict ListsWhatItTakes(Device& device) {
    if (device.service == nullptr) return Skip("see registration.interface");
    const std::vector<Mode> claimed = device.Claimed();
    std::vector<int32_t> numbers;
    for (const Mode mode : claimed) numbers.push_back(static_cast<int32_t>(mode));
    const std::vector<int32_t> listed = ListedModes(device);
    if (listed.empty()) return Skip("getSupportedOpModes lists none");
    for (const int32_t number : numbers) {
        if (std::count(listed.begin(), listed.end(), number) == 1) continue;
        return Warn(Say("getSupportedOpModes does not list mode ", number,
                        ", whose streams are taken"));
    }
    return {};
}

// Sends the streams of `mode` with a change. They have to be refused, and the right ones taken
// then.
Verdict Refuses(Device& device, Mode mode, Change change, bool must = true) {
    if (!device.CanOpen()) return Skip("see session.open");
    const auto& taken = device.Plain(mode).configured;
    if (!taken.Ok()) return Skip(Say("the streams of ", NameOf(mode), " are not taken"));
    return WithSession(device, [&](Session& session) -> Verdict {
        OfflineSessionConfigureInfo info = ConfigurationOf(mode);
        change(info);
        const Answer answer = session.Configure(info);
        if (!answer.Ok() && !answer.Refused()) return Fail("a status", answer.Text());
        const Answer right = session.Configure(ConfigurationOf(mode));
        if (!right.Ok()) return Fail("the right streams taken afterwards", right.Text());
        if (answer.Refused()) return {};
        return must ? Fail("a refusal", answer.Text()) : Warn("taken without a word");
    });
}

// Of the first mode that is taken; its first stream is an input, its last one the output.
Verdict Refuses(Device& device, Change change, bool must = true) {
    const std::vector<Mode> claimed = device.Claimed();
    if (claimed.empty()) return Skip("no mode is taken: see configuration.some-mode");
    return Refuses(device, claimed[0], change, must);
}

Verdict TakesThemAgain(Device& device) {
    return WithStreams(device, [&](Session& session, const auto& info) -> Verdict {
        const Answer again = session.Configure(info);
        if (!again.Ok()) return Fail("the same streams taken a second time", again.Text());
        const Answer sent = session.Process(device.Request(info));
        const std::string problem = sent.Ok() ? session.AwaitResult(sent.number) : sent.Text();
        return problem.empty() ? Verdict() : Fail("a result then", problem);
    });
}

Verdict TakesAnotherMode(Device& device) {
    std::vector<Mode> working;
    for (const Mode mode : kModes) {
        if (device.Plain(mode).Works()) working.push_back(mode);
    }
    if (working.size() < 2) return Skip("fewer than two modes bring results");
    return WithStreams(device, working[0], [&](Session& session, const auto&) -> Verdict {
        const OfflineSessionConfigureInfo& info = device.Plain(working[1]).info;
        const Answer other = session.Configure(info);
        if (!other.Ok()) return Fail("the streams of another mode taken", other.Text());
        const Answer sent = session.Process(device.Request(info));
        const std::string problem = sent.Ok() ? session.AwaitResult(sent.number) : sent.Text();
        if (problem.empty()) return {};
        return Fail(Say("a result of ", NameOf(working[1]), " after ", NameOf(working[0])),
                    problem);
    });
}

Verdict AnswersWithFramesInFlight(Device& device) {
    return WithStreams(device, [&](Session& session, const auto& info) -> Verdict {
        std::vector<int32_t> frames;
        for (int i = 0; i < 2; ++i) {
            const Answer sent = session.Process(device.Request(info, 100 * i));
            if (sent.Ok()) frames.push_back(sent.number);
        }
        const Answer again = session.Configure(info);
        if (!again.Ok() && !again.Refused()) return Fail("OK or a refusal", again.Text());
        for (const int32_t frame : frames) {
            const auto told = [&](const Events& events) {
                return !Outputs(events, frame).empty() || Failed(events, frame);
            };
            if (session.Client().WaitFor(told, kWait)) continue;
            return Fail(Say("result or error of frame ", frame, ", which was in flight"),
                        again.Text() + ", then within 5 s: " + Summary(session.Client().All()));
        }
        return {};
    });
}

Stream& Input(OfflineSessionConfigureInfo& info) {
    return info.streams.front();
}

Stream& Output(OfflineSessionConfigureInfo& info) {
    return info.streams.back();
}

}  // namespace

Checks ConfigurationChecks() {
    constexpr char kCompare[] = "Compare every stream with what the mode takes, and refuse others.";
    constexpr char kSides[] = "Check width and height before they are used to compute sizes.";
    return {
            {"configuration.some-mode",
             "configureOfflineStreams takes the streams of B2Y, Y2J or MMF.",
             "Take the stream sets as the test client sends them.", TakesOneMode},
            {"configuration.b2y", "The streams of B2Y are taken, if the mode is claimed.",
             "RAW10 4096 x 3072 in, YCBCR_420_888 4000 x 3000 out.", Takes<Mode::kB2Y>},
            {"configuration.y2j", "The streams of Y2J are taken, if the mode is claimed.",
             "YCBCR_420_888 4000 x 3000 in, BLOB 4000 x 3000 of 24000000 bytes out.",
             Takes<Mode::kY2J>},
            {"configuration.mmf", "The streams of MMF are taken, if the mode is claimed.",
             "RAW10 4096 x 3072 and YCBCR_420_888 640 x 480 in, YCBCR_420_888 4000 x 3000 out.",
             Takes<Mode::kMMF>},
            {"configuration.listed", "getSupportedOpModes lists the modes whose streams are taken.",
             "Make the list from the same table as the test of the streams.", ListsWhatItTakes},
            {"configuration.input-format",
             "An input stream of a format that the mode does not take is refused.", kCompare,
             [](Device& d) {
                 return Refuses(d, [](auto& i) { Input(i).format = PixelFormat::RGBA_8888; });
             }},
            {"configuration.output-format",
             "An output stream of a format that the mode does not give is refused.", kCompare,
             [](Device& d) {
                 return Refuses(d, [](auto& i) { Output(i).format = PixelFormat::RAW16; });
             }},
            {"configuration.zero-width", "A width of 0 is refused.", kSides,
             [](Device& d) { return Refuses(d, [](auto& i) { Output(i).width = 0; }); }},
            {"configuration.zero-height", "A height of 0 is refused.", kSides,
             [](Device& d) { return Refuses(d, [](auto& i) { Input(i).height = 0; }); }},
            {"configuration.negative-width", "A negative width is refused.", kSides,
             [](Device& d) { return Refuses(d, [](auto& i) { Input(i).width = -4096; }); }},
            {"configuration.negative-height", "A negative height is refused.", kSides,
             [](Device& d) { return Refuses(d, [](auto& i) { Output(i).height = -3000; }); }},
            {"configuration.huge-size", "Sides whose product fits no integer are refused.", kSides,
             [](Device& d) {
                 return Refuses(d, [](auto& i) { Output(i).width = Output(i).height = INT32_MAX; });
             }},
            {"configuration.no-input", "A set without an input stream is refused.", kCompare,
             [](Device& d) {
                 return Refuses(d, [](auto& i) { i.streams.erase(i.streams.begin()); });
             }},
            {"configuration.no-output", "A set without an output stream is refused.", kCompare,
             [](Device& d) { return Refuses(d, [](auto& i) { i.streams.pop_back(); }); }},
            {"configuration.no-streams",
             "An empty list of streams is refused in a mode that has some.", kCompare,
             [](Device& d) { return Refuses(d, [](auto& i) { i.streams.clear(); }); }},
            {"configuration.extra-input", "An input stream that the mode does not take is refused.",
             kCompare,
             [](Device& d) {
                 return Refuses(d, [](auto& i) {
                     i.streams.insert(i.streams.begin(), Input(i));
                     Input(i).id = 9;
                 });
             }},
            {"configuration.output-as-input", "Streams whose directions are exchanged are refused.",
             "Look at the stream's type, not at its place in the list.",
             [](Device& d) {
                 return Refuses(
                         d, [](auto& i) { std::swap(Input(i).streamType, Output(i).streamType); });
             }},
            {"configuration.unknown-direction",
             "A stream that is neither input nor output is refused.",
             "Test the type for both values; an enum holds any number that came over binder.",
             [](Device& d) {
                 return Refuses(d, [](auto& i) { Output(i).streamType = StreamType(7); });
             }},
            {"configuration.same-id", "Two streams of one id are refused.",
             "Collect the ids in a set.",
             [](Device& d) { return Refuses(d, [](auto& i) { Output(i).id = Input(i).id; }); }},
            {"configuration.unknown-mode", "An unknown operation mode is refused.",
             "Look the mode up in the table of those that are offered.",
             [](Device& d) { return Refuses(d, [](auto& i) { i.opMode = 99; }); }},
            {"configuration.negative-mode", "A negative operation mode is refused.",
             "Look the mode up; do not use it as an index.",
             [](Device& d) { return Refuses(d, [](auto& i) { i.opMode = -1; }); }},
            {"configuration.other-modes-streams",
             "The streams of one mode are refused for another one.", kCompare,
             [](Device& d) {
                 return Refuses(d, [](auto& i) {
                     i.opMode = i.opMode == static_cast<int32_t>(Mode::kY2J) ? 0 : 1;
                 });
             }},
            {"configuration.blob-size-zero", "A BLOB stream without a buffer size is refused.",
             "Check the buffer size: it must hold a file and its 8 bytes of trailer.",
             [](Device& d) {
                 return Refuses(d, Mode::kY2J, [](auto& i) { Output(i).bufferSize = 0; });
             }},
            {"configuration.blob-size-negative",
             "A BLOB stream with a negative buffer size is refused.",
             "Check the buffer size before it is used as an unsigned number.",
             [](Device& d) {
                 return Refuses(d, Mode::kY2J, [](auto& i) { Output(i).bufferSize = -24000000; });
             }},
            {"configuration.usage", "A stream that nothing uses (usage 0) is better refused.",
             "Refuse usage 0: a buffer of it can be neither filled nor read.",
             [](Device& d) {
                 return Refuses(
                         d, [](auto& i) { Output(i).usage = {}; }, /* must */ false);
             }},
            {"configuration.session-parameters",
             "Session parameters that are no camera metadata are better refused.",
             "Validate the blob before it is read.",
             [](Device& d) {
                 return Refuses(
                         d, [](auto& i) { i.sessionParams.assign(64, 0xff); }, false);
             }},
            {"configuration.again",
             "The same streams are taken a second time, and a frame works then.",
             "Replace the earlier streams.", TakesThemAgain},
            {"configuration.other-mode",
             "A session takes the streams of another mode, and a frame works then.",
             "Keep nothing of the earlier mode.", TakesAnotherMode},
            {"configuration.in-flight",
             "With frames in flight, new streams are taken or refused, and the frames still "
             "answered.",
             "Refuse while frames are in flight, or let them end with the streams they came with.",
             AnswersWithFramesInFlight},
    };
}

}  // namespace conformance
