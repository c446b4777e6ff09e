// The faults that the offline camera service can show on demand, by name. Data only, so that other
// programs can list them.
#pragma once

#include <cstdint>

namespace offlinecamera {

enum class Fault {
    kOpenError,
    kOpenNull,
    kConfigureError,
    kProcessError,
    kDieOnOpen,
    kDieOnConfigure,
    kDieOnProcess,
    kDieAfterProcess,
    kNoShutter,
    kErrorNotify,
    kShutterOtherFrame,
    kNoResult,
    kLateResult,
    kResultFirst,
    kEarlyResult,
    kSplitResult,
    kWrongBuffers,
    kExtraBuffer,
    kReorderedBuffers,
    kDuplicateResult,
    kCorruptMetadata,
    kEmptyCallbacks,
    kSmallJpeg,
    kLend,
    kReturnTwice,
    kReturnUnknown,
};

struct FaultName {
    Fault fault;
    const char* name;
    const char* argument;     // what "=ARG" means, or null where none is taken
    int64_t defaultArgument;  // in the unit of `argument`
    int64_t maxArgument;
    const char* text;  // what happens, one line
};

inline constexpr FaultName kFaultNames[] = {
        {Fault::kOpenError, "open-error", nullptr, 0, 0, "openOfflineSession fails with an error"},
        {Fault::kOpenNull, "open-null", nullptr, 0, 0,
         "openOfflineSession succeeds but gives no session"},
        {Fault::kConfigureError, "configure-error", nullptr, 0, 0,
         "configureOfflineStreams fails with an error"},
        {Fault::kProcessError, "process-error", nullptr, 0, 0,
         "processOfflineRequest fails with an error"},
        {Fault::kDieOnOpen, "die-on-open", nullptr, 0, 0,
         "the service is killed inside openOfflineSession"},
        {Fault::kDieOnConfigure, "die-on-configure", nullptr, 0, 0,
         "the service is killed inside configureOfflineStreams"},
        {Fault::kDieOnProcess, "die-on-process", nullptr, 0, 0,
         "the service is killed inside processOfflineRequest"},
        {Fault::kDieAfterProcess, "die-after-process", nullptr, 0, 0,
         "the service is killed after processOfflineRequest, before the shutter"},
        {Fault::kNoShutter, "no-shutter", nullptr, 0, 0, "no shutter message, only the result"},
        {Fault::kErrorNotify, "error-notify", nullptr, 0, 0,
         "an error message instead of the shutter message"},
        {Fault::kShutterOtherFrame, "shutter-other-frame", nullptr, 0, 0,
         "the shutter message names a frame that was not asked for"},
        {Fault::kNoResult, "no-result", nullptr, 0, 0, "no result, only the shutter message"},
        {Fault::kLateResult, "late-result", "milliseconds", 6000, 60000,
         "the result comes late, by default after a client's usual wait of 5 s"},
        {Fault::kResultFirst, "result-first", nullptr, 0, 0,
         "the result comes before the shutter message"},
        {Fault::kEarlyResult, "early-result", nullptr, 0, 0,
         "shutter and result come before processOfflineRequest returns"},
        {Fault::kSplitResult, "split-result", nullptr, 0, 0,
         "the result comes in two pieces: first without buffers, then with them"},
        {Fault::kWrongBuffers, "wrong-buffers", nullptr, 0, 0,
         "the result names buffers that were not in the request"},
        {Fault::kExtraBuffer, "extra-buffer", nullptr, 0, 0,
         "the result names one buffer more than the request had"},
        {Fault::kReorderedBuffers, "reordered-buffers", nullptr, 0, 0,
         "the result names its buffers in reverse order (shows with several output streams)"},
        {Fault::kDuplicateResult, "duplicate-result", nullptr, 0, 0, "the result comes twice"},
        {Fault::kCorruptMetadata, "corrupt-metadata", nullptr, 0, 0,
         "the result's metadata is cut short"},
        {Fault::kEmptyCallbacks, "empty-callbacks", nullptr, 0, 0,
         "every callback is first called with an empty list"},
        {Fault::kSmallJpeg, "small-jpeg", nullptr, 0, 0,
         "only the top left 320 x 240 pixels are encoded, so that the file is small"},
        {Fault::kLend, "lend", "buffers", 2, 16,
         "buffers of the first input stream's shape are borrowed and given back in every mode"},
        {Fault::kReturnTwice, "return-twice", nullptr, 0, 0,
         "one buffer is borrowed and given back twice"},
        {Fault::kReturnUnknown, "return-unknown", nullptr, 0, 0,
         "a buffer is given back that was never borrowed"},
};

}  // namespace offlinecamera
