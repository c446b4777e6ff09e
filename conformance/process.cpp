// Checks of what the service delivers for good requests.
#include <system/camera_metadata.h>

#include <algorithm>
#include <set>

#include "plain_run.h"

namespace conformance {

namespace {

using LookAtFrame = std::function<Verdict(const PlainRun&, int32_t frame, const std::string& name)>;

// Looks at every frame that the plain runs have sent, up to the first finding. `needsResult` leaves
// out those without a result.
Verdict EachFrame(Device& device, bool needsResult, const LookAtFrame& look) {
    bool any = false;
    for (const Mode mode : device.Claimed()) {
        const PlainRun& run = device.Plain(mode);
        for (const SentFrame& sent : run.frames) {
            if (!sent.answer.Ok() || (needsResult && !sent.result)) continue;
            any = true;
            const int32_t frame = sent.answer.number;
            Verdict found = look(run, frame, Say(NameOf(mode), " frame ", frame));
            if (!found.Good()) return found;
        }
    }
    return any ? Verdict()
               : Skip(needsResult ? "no result: see process.result" : "no frame was taken");
}

// The same with every result of a frame.
Verdict EachResult(
        Device& device,
        const std::function<Verdict(const PlainRun&, const Event&, const std::string&)>& look) {
    return EachFrame(device, true,
                     [&](const auto& run, int32_t frame, const auto& name) -> Verdict {
                         for (const Event& event : run.events) {
                             if (event.kind != Event::kResult || event.frame != frame) continue;
                             Verdict found = look(run, event, name);
                             if (!found.Good()) return found;
                         }
                         return {};
                     });
}

std::set<int32_t> NumbersOf(const PlainRun& run) {
    std::set<int32_t> numbers;
    for (const SentFrame& sent : run.frames) {
        if (sent.answer.Ok()) numbers.insert(sent.answer.number);
    }
    return numbers;
}

// The outputs of a mode's requests, whose buffer ids count from 1.
std::vector<BufferMark> OutputsOf(const PlainRun& run) {
    std::vector<BufferMark> outputs;
    for (const Stream& stream : run.info.streams) {
        if (!IsInput(stream))
            outputs.push_back({stream.id, static_cast<int64_t>(outputs.size()) + 1});
    }
    return outputs;
}

bool Contains(const std::vector<BufferMark>& buffers, const BufferMark& wanted) {
    return std::any_of(buffers.begin(), buffers.end(),
                       [&](const BufferMark& buffer) { return buffer.Same(wanted); });
}

Verdict TakesGoodRequests(Device& device) {
    if (device.Claimed().empty()) return Skip("no mode is taken: see configuration.some-mode");
    for (const Mode mode : device.Claimed()) {
        const PlainRun& run = device.Plain(mode);
        if (!run.problem.empty()) return Skip(run.problem);
        for (const SentFrame& sent : run.frames) {
            if (!sent.answer.Ok())
                return Fail(Say("OK for a request of ", NameOf(mode)), sent.answer.Text());
        }
    }
    return {};
}

Verdict NumbersFrames(Device& device) {
    return EachFrame(device, false, [](const auto&, int32_t frame, const auto& name) {
        return frame >= 0 ? Verdict() : Fail("a frame number of 0 or more", name);
    });
}

Verdict NumbersRise(Device& device) {
    bool any = false;
    for (const Mode mode : device.Claimed()) {
        const auto& frames = device.Plain(mode).frames;
        for (size_t i = 1; i < frames.size() && frames[i].answer.Ok(); ++i) {
            any = true;
            if (frames[i].answer.number > frames[i - 1].answer.number) continue;
            return Fail(
                    Say("a number above ", frames[i - 1].answer.number, " for the next request"),
                    Say(frames[i].answer.number));
        }
    }
    return any ? Verdict() : Skip("no second frame was taken");
}

Verdict SendsOneShutter(Device& device) {
    return EachFrame(device, false, [](const auto& run, int32_t frame, const auto& name) {
        const size_t count = Count(run.events, Event::kShutter, frame);
        return count == 1 ? Verdict()
                          : Fail("one shutter message for " + name, Say(count, " within 5 s"));
    });
}

Verdict ShuttersAreOfSentFrames(Device& device) {
    for (const Mode mode : device.Claimed()) {
        const PlainRun& run = device.Plain(mode);
        const std::set<int32_t> sent = NumbersOf(run);
        for (const Event& event : run.events) {
            if (event.kind != Event::kShutter || sent.count(event.frame) > 0) continue;
            return Fail("shutter messages of frames that were sent",
                        Say("one of frame ", event.frame, " in ", NameOf(mode)));
        }
    }
    return {};
}

Verdict TimestampsRise(Device& device) {
    bool any = false;
    for (const Mode mode : device.Claimed()) {
        const Event* last = nullptr;
        for (const Event& event : device.Plain(mode).events) {
            if (event.kind != Event::kShutter) continue;
            any = true;
            if (last != nullptr && last->frame != event.frame &&
                event.timestamp <= last->timestamp) {
                return Fail(
                        Say("a timestamp above ", last->timestamp, " ns, frame ", last->frame,
                            "'s"),
                        Say(event.timestamp, " ns for frame ", event.frame, " of ", NameOf(mode)));
            }
            last = &event;
        }
    }
    return any ? Verdict() : Skip("no shutter message: see process.shutter");
}

Verdict ShutterIsFirst(Device& device) {
    return EachResult(device,
                      [](const auto& run, const Event& result, const auto& name) -> Verdict {
                          for (const Event& event : run.events) {
                              if (event.kind != Event::kShutter || event.frame != result.frame)
                                  continue;
                              if (event.at > result.at)
                                  return Warn("the result of " + name + " came before its shutter");
                          }
                          return {};
                      });
}

Verdict NumberIsFirst(Device& device) {
    for (const Mode mode : device.Claimed()) {
        const PlainRun& run = device.Plain(mode);
        for (const SentFrame& sent : run.frames) {
            for (const Event& event : run.events) {
                const bool early = event.kind <= Event::kResult &&
                                   event.frame == sent.answer.number &&
                                   event.at + std::chrono::milliseconds(20) < sent.answered;
                if (!early) continue;
                return Warn(Say("frame ", event.frame, " of ", NameOf(mode), " was told of while ",
                                "processOfflineRequest had not yet returned its number"));
            }
        }
    }
    return {};
}

Verdict SendsAResult(Device& device) {
    return EachFrame(device, false,
                     [](const auto& run, int32_t frame, const auto& name) -> Verdict {
                         for (const SentFrame& sent : run.frames) {
                             if (sent.answer.number == frame && sent.result) return {};
                         }
                         return Fail("a result of " + name + " within 5 s", Summary(run.events));
                     });
}

Verdict ResultsAreOfSentFrames(Device& device) {
    for (const Mode mode : device.Claimed()) {
        const PlainRun& run = device.Plain(mode);
        const std::set<int32_t> sent = NumbersOf(run);
        for (const Event& event : run.events) {
            if (event.kind != Event::kResult || sent.count(event.frame) > 0) continue;
            return Fail("results of frames that were sent",
                        Say("one of frame ", event.frame, " in ", NameOf(mode)));
        }
    }
    return {};
}

Verdict CoversAllOutputs(Device& device) {
    return EachFrame(
            device, false, [](const auto& run, int32_t frame, const auto& name) -> Verdict {
                const std::vector<BufferMark> named = Outputs(run.events, frame);
                if (Count(run.events, Event::kResult, frame) == 0) return {};  // see process.result
                for (const BufferMark& output : OutputsOf(run)) {
                    if (Contains(named, output)) continue;
                    return Fail(Text(output) + " in the result of " + name, Summary(run.events));
                }
                return {};
            });
}

Verdict NamesOwnBuffers(Device& device) {
    return EachFrame(device, false,
                     [](const auto& run, int32_t frame, const auto& name) -> Verdict {
                         for (const BufferMark& buffer : Outputs(run.events, frame)) {
                             if (Contains(OutputsOf(run), buffer)) continue;
                             return Fail("output buffers of the request in the result of " + name,
                                         Text(buffer));
                         }
                         return {};
                     });
}

Verdict NamesOutputsOnce(Device& device) {
    return EachFrame(device, true, [](const auto& run, int32_t frame, const auto& name) -> Verdict {
        const std::vector<BufferMark> named = Outputs(run.events, frame);
        for (const BufferMark& output : OutputsOf(run)) {
            const auto times =
                    std::count_if(named.begin(), named.end(),
                                  [&](const BufferMark& buffer) { return buffer.Same(output); });
            if (times > 1) return Fail(Text(output) + " once for " + name, Say(times, " times"));
        }
        return {};
    });
}

Verdict CoversTwoOutputs(Device& device) {
    return WithStreams(device, [&](Session& session, OfflineSessionConfigureInfo info) -> Verdict {
        info.streams.push_back(info.streams.back());
        info.streams.back().id = 5;
        const Answer taken = session.Configure(info);
        if (taken.Refused()) return Skip("a second output stream: " + taken.Text());
        const Answer sent = session.Process(device.Request(info));
        const std::string problem = sent.Ok() ? session.AwaitResult(sent.number) : sent.Text();
        if (!problem.empty()) return Fail("a result with both output streams' buffers", problem);
        const std::vector<BufferMark> named = Outputs(session.Client().All(), sent.number);
        const int32_t first = info.streams[info.streams.size() - 2].id;
        if (named.size() == 2 && Contains(named, {first, 1}) && Contains(named, {5, 2})) return {};
        return Fail(Say("stream ", first, " buffer 1 and stream 5 buffer 2"),
                    Summary(session.Client().All()));
    });
}

Verdict BuffersAreGood(Device& device) {
    return EachResult(device, [](const auto&, const Event& result, const auto& name) -> Verdict {
        for (const BufferMark& buffer : result.buffers) {
            if (!buffer.good)
                return Fail("status OK for each buffer of " + name, Text(buffer) + ": ERROR");
        }
        return {};
    });
}

Verdict SendsNoErrors(Device& device) {
    for (const Mode mode : device.Claimed()) {
        for (const Event& event : device.Plain(mode).events) {
            if (event.kind != Event::kError) continue;
            return Fail("no error message for good requests",
                        Say("one of frame ", event.frame, " in ", NameOf(mode)));
        }
    }
    return {};
}

Verdict PartsAddUp(Device& device) {
    return EachFrame(device, true, [](const auto& run, int32_t frame, const auto& name) -> Verdict {
        int32_t stated = 0, came = 0;
        for (const Event& event : run.events) {
            if (event.kind != Event::kResult || event.frame != frame) continue;
            stated = std::max(stated, event.partial);
            came += !event.metadata.empty();
            if (event.partial < 0)
                return Fail("a number of parts", Say(event.partial, " for ", name));
        }
        if (stated == 0 || stated == came) return {};
        const std::string parts =
                Say(stated, " parts of metadata are stated for ", name, ", ", came, " came");
        return stated > 1 ? Fail("as many parts of metadata as are stated", parts) : Warn(parts);
    });
}

Verdict MetadataIsSound(Device& device) {
    return EachResult(device, [](const auto&, const Event& result, const auto& name) -> Verdict {
        const size_t size = result.metadata.size();
        if (size == 0) return {};
        const auto* blob = reinterpret_cast<const camera_metadata_t*>(result.metadata.data());
        if (size < sizeof(uint32_t) || get_camera_metadata_size(blob) != size) {
            return Fail("metadata of the size that its first four bytes state",
                        Say(size, " bytes for ", name));
        }
        if (validate_camera_metadata_structure(blob, &size) == 0) return {};
        return Fail("camera metadata", Say(size, " bytes that do not parse, for ", name));
    });
}

Verdict NamesOwnInputs(Device& device) {
    return EachResult(device,
                      [](const auto& run, const Event& result, const auto& name) -> Verdict {
                          std::vector<BufferMark> inputs;
                          for (size_t frame = 0; frame < FramesOf(run.mode); ++frame) {
                              for (const Stream& stream : run.info.streams) {
                                  if (IsInput(stream))
                                      inputs.push_back({stream.id, int64_t(inputs.size()) + 1});
                              }
                          }
                          for (const BufferMark& buffer : result.inputs) {
                              if (!Contains(inputs, buffer)) {
                                  return Warn("the result of " + name +
                                              " names an input that it had not: " + Text(buffer));
                              }
                          }
                          return {};
                      });
}

Verdict CallsWithSomething(Device& device) {
    for (const Mode mode : device.Claimed()) {
        for (const Event& event : device.Plain(mode).events) {
            if (event.kind != Event::kEmpty) continue;
            return Fail("callbacks with at least one entry",
                        Say(event.callback, " with an empty list"));
        }
    }
    return {};
}

Verdict BearsARefusedMessage(Device& device) {
    return WithStreams(device, [&](Session& session, const auto& info) -> Verdict {
        session.Client().refuseMessages = true;
        const Answer sent = session.Process(device.Request(info));
        const std::string problem = sent.Ok() ? session.AwaitResult(sent.number) : sent.Text();
        return problem.empty() ? Verdict()
                               : Fail("a result though notify was answered with an error", problem);
    });
}

}  // namespace

Checks ProcessChecks() {
    constexpr char kIds[] = "Copy stream id and buffer id of each output from the request.";
    return {
            {"process.taken", "processOfflineRequest takes the requests of the test client.",
             "Answer OK, and work on a thread of the session.", TakesGoodRequests},
            {"process.number",
             "processOfflineRequest returns a frame number for a request that asks with -1.",
             "Store the number in the out-argument before returning.", NumbersFrames},
            {"process.numbers-rise", "Frame numbers of a session are unique and rise.",
             "Count per session, or for the whole service; never start again in a session.",
             NumbersRise},
            {"process.shutter", "Each frame has exactly one shutter message, within 5 s.",
             "Send the shutter once, as soon as the work on the frame begins.", SendsOneShutter},
            {"process.shutter-number",
             "Shutter messages carry numbers that processOfflineRequest has returned.",
             "Send the number that the call returned, not a counter of another kind.",
             ShuttersAreOfSentFrames},
            {"process.timestamps", "Shutter timestamps rise from frame to frame.",
             "Take the time of CLOCK_MONOTONIC (or boot time) in nanoseconds for each frame.",
             TimestampsRise},
            {"process.shutter-first", "A frame's shutter better comes before its result.",
             "Send the shutter before the work, the result after it, from one thread.",
             ShutterIsFirst},
            {"process.number-first",
             "processOfflineRequest better returns before the frame is told of.",
             "Work on another thread than the call's.", NumberIsFirst},
            {"process.result", "Each frame has a result that is complete within 5 s.",
             "Call processCaptureResult when the frame is done, also when it failed.",
             SendsAResult},
            {"process.result-number",
             "Results carry numbers that processOfflineRequest has returned.",
             "Send the number that the call returned.", ResultsAreOfSentFrames},
            {"process.result-covers-all-outputs",
             "The results of a frame name every output buffer of its request.", kIds,
             CoversAllOutputs},
            {"process.result-own-buffers",
             "The results of a frame name no other output buffers than its request's.", kIds,
             NamesOwnBuffers},
            {"process.output-once", "Each output buffer is named once for each frame.",
             "Send a frame's buffers in one result.", NamesOutputsOnce},
            {"process.two-outputs",
             "A request with two output streams, where taken, has both in its result.",
             "Walk over all output buffers, or refuse more than one output stream.",
             CoversTwoOutputs},
            {"process.buffer-status", "The output buffers of a good request have the status OK.",
             "Leave the status OK (0) unless the picture could not be made.", BuffersAreGood},
            {"process.no-error", "Good requests bring no error messages.",
             "Send an error message only in place of a picture.", SendsNoErrors},
            {"process.partial-results",
             "As many parts of metadata come as numPartialMetadata states.",
             "State 1 and send all metadata at once, or count the parts.", PartsAddUp},
            {"process.metadata",
             "Result metadata is empty or one camera metadata blob of just its size.",
             "Send get_camera_metadata_size() bytes of the blob.", MetadataIsSound},
            {"process.own-inputs",
             "The input side of a result names no other buffers than the request's inputs.",
             "Copy the input ids from the request, or leave the list empty.", NamesOwnInputs},
            {"process.empty-callbacks", "No callback is called with an empty list.",
             "Test the list before the call; a client refuses an empty one.", CallsWithSomething},
            {"process.refused-message",
             "A client's error answer to notify does not keep the result away.",
             "Log a failed callback and go on.", BearsARefusedMessage},
    };
}

}  // namespace conformance
