// What a run of the tool may come to when one call below it fails.

#include "tests/end_to_end/injection_rules.h"

#include <signal.h>
#include <stdlib.h>

#include <algorithm>
#include <regex>

namespace end_to_end {

namespace {

const char kNotLoaded[] = "not loaded";  // by the dynamic loader
// Calls through empty references: to the service or session, and to the buffer wrapper.
const char kNoSession[] = "crash without a session";
const char kNoWrapper[] = "crash at the first buffer";
const char kNotConfigured[] = "not configured";  // the streams were refused
const char kNotBuilt[] = "not built";            // the last source was not loaded: nothing to send
const char kRefused[] = "refused";               // the request was

// Expectations that depend on which buffer the failing call is for, in the order of the calls: the
// inputs, the output, and in MMF one that the service borrows.
const char kByBuffer[] = "refused, but completed for a borrowed buffer";
const char kByLoad[] = "not built for the last input, else completed";

struct Rule {
    const char* call;  // pattern of the call without its number
    int first, last;   // its numbers
    const char* end;
    const char* message;  // pattern of a line in the log; empty: none
    int callsPerBuffer = 1;
};

constexpr int kAny = 1 << 20;

// The first that fits counts.
const Rule kRules[] = {
        // Transactions, whatever their error; then classes.
        {"IServiceManager.checkService IAllocator", 1, 1, kNoWrapper,
         "Gralloc Init failed, reason zelAllocator getService failed"},
        {"IServiceManager.checkService IAllocator", 2, 2, kCompleted,
         "Unable to get allocator, using previously known IMapper library suffix 'zel'"},
        {"IServiceManager.checkService IOfflineCameraService", 1, 1, kNoSession,
         "getService is NULL for offlinecameraservice"},
        {"IAllocator.getIMapperLibrarySuffix", 1, 1, kCompleted, ""},
        {"IOfflineCameraService.openOfflineSession", 1, 1, kNoSession, ""},
        {"IOfflineCameraSession.configureOfflineStreams", 1, 1, kNotConfigured, ""},
        {"IAllocator.allocate", 1, kAny, kByBuffer, "Failed to allocate buffer: -(129|5|8)"},
        {"IOfflineCameraSession.processOfflineRequest", 1, 1, kRefused, ""},
        {"IOfflineCameraSession.closeOfflineSession", 1, 1, kCompleted, ""},
        {"IAllocator", 1, 1, kNoWrapper,
         "Gralloc Init failed, reason zelAllocator getService failed"},
        {"IOfflineCameraService", 1, 1, kNoSession, "getService is NULL for offlinecameraservice"},
        {"IOfflineCameraSession", 1, 1, kNoSession, ""},

        // Mappers: without the first the tool has no buffers; the others gate the plane layouts.
        {"IMapper.getService", 1, 1, kNoWrapper,
         "\\[AIDL\\] OfflineCameraClient constructor called"},
        {"IMapper.getService", 2, 2, kCompleted, ""},
        {"android_load_sphal_library android.*mapper@4.0-impl-zel.so", 1, 1, kNoWrapper, ""},
        {"android_load_sphal_library android.*mapper@4.0-impl-zel.so", 2, 2, kCompleted, ""},
        {"android_load_sphal_library mapper.zel.so", 1, 1, kCompleted,
         "Gralloc Init failed, reason zelAidlMapper getInstance failed"},
        {"GetFromBufferDescriptor", 1, kAny, kCompleted, ""},

        // Buffers. A broken transport is silent, but for a release.
        {"createDescriptor", 1, kAny, kByBuffer, "Failed to allocate buffer: -8"},
        {"importBuffer", 1, kAny, kByBuffer, ""},
        {"get", 1, kAny, kCompleted, ""},
        {"lock", 1, kAny, kByLoad, ""},
        {"unlock", 1, kAny, kCompleted, ""},
        {"freeBuffer", 1, kAny, kCompleted, "Failed to free buffer 0x[0-9a-f]+"},
        {"mmap", 1, kAny, kByLoad, "Failed to lock buffer 0x[0-9a-f]+: 5", 2},

        // Descriptors. Connections in the order of the lookups; the last is the process's own
        // socket.
        {"socket", 1, 2, kNoWrapper, ""},
        {"socket", 3, 3, kNoSession, ""},
        {"socket", 4, 4, kCompleted, ""},
        {"fopen /proc/\\d+/comm", 1, 1, kCompleted, ""},
        {"fopen .*/original_dump.bin", 1, kAny, kCompleted, "allocate input metadata .*"},
        {"fopen .*/mmf_fd.yuv", 1, 2, kCompleted, "load source mmf fd frame failed"},
        {"fopen .*/mmf_fd.yuv", 3, 3, kNotBuilt, "load source mmf fd frame failed"},
        {"fopen .*/(4096_3072_RAW10.raw|4000_3000_NV12.yuv)", 1, kAny, kByLoad,
         ".*: fopen failed .*,error code Too many open files"},
        {"fopen .*/OfflineAidl_.*", 1, 1, kCompleted,
         "WaitCaptureResultCompleted: store fp failed"},
        {"recvmsg", 1, kAny, kByBuffer, "Failed to allocate buffer: -129"},
        {"fcntl F_DUPFD", 1, kAny, kByBuffer, "", 4},
};

bool contains(const std::vector<std::string>& messages, const char* text) {
    return std::find(messages.begin(), messages.end(), text) != messages.end();
}

bool matches(const std::vector<std::string>& messages, const char* pattern) {
    const std::regex wanted(pattern);
    return std::any_of(messages.begin(), messages.end(), [&](const std::string& message) {
        return std::regex_match(message, wanted);
    });
}

std::string expectedEnd(const Rule& rule, const std::string& mode, int number) {
    const bool fuses = mode == "MMF";
    const int inputs = fuses ? 6 : 1;
    const int buffer = (number + rule.callsPerBuffer - 1) / rule.callsPerBuffer;
    if (rule.end == kByBuffer) return buffer <= inputs + 1 ? kRefused : kCompleted;
    if (rule.end != kByLoad) return rule.end;
    return buffer == inputs ? kNotBuilt : kCompleted;
}

const Rule* findRule(const std::string& call, int number) {
    for (const Rule& rule : kRules) {
        if (number < rule.first || number > rule.last) continue;
        if (std::regex_match(call, std::regex(rule.call))) return &rule;
    }
    return nullptr;
}

// A crash is allowed at two places only.
std::string crashOf(const std::vector<std::string>& messages) {
    if (contains(messages, "ProcessOfflineRequest sucessfully") ||
        contains(messages, "main: offline camera client exit")) {
        return "late crash";
    }
    return contains(messages, "ConfigureOfflineStreams sucessfully") ? kNoWrapper : kNoSession;
}

std::string judgeLimit(const std::string& end) {
    for (const char* allowed : {kNotLoaded, kNoSession, kNoWrapper, kNotBuilt, kRefused}) {
        if (end == allowed) return "";
    }
    return end;
}

}  // namespace

std::string endOf(int status, const std::vector<std::string>& messages) {
    if (status == 127) return kNotLoaded;
    // A sanitizer that sees the empty reference aborts.
    if (status == 128 + SIGSEGV || status == 128 + SIGABRT) return crashOf(messages);
    if (status != 0 || !contains(messages, "CloseOfflineSession") ||
        !contains(messages, "main: offline camera client exit") ||
        !contains(messages, "[AIDL] OfflineCameraClient destructor called")) {
        return "status " + std::to_string(status) + " without an end in good order";
    }
    if (contains(messages, "ConfigureOfflineStreams, FAILED...")) return kNotConfigured;
    if (contains(messages, "ProcessOfflineRequest, FAILED...")) return kRefused;
    if (!contains(messages, "ProcessOfflineRequest sucessfully")) return kNotBuilt;
    return contains(messages, "WaitCaptureResultCompleted status is 0") ? kCompleted : kTimedOut;
}

std::string judge(const std::string& mode, const std::string& call, const std::string& end,
                  const std::vector<std::string>& messages) {
    if (call == kDescriptorLimit) return judgeLimit(end);
    const size_t mark = call.rfind(" #");
    const int number = mark == std::string::npos ? 0 : atoi(call.c_str() + mark + 2);
    const Rule* const rule = findRule(call.substr(0, mark), number);
    if (rule == nullptr) return "there is no rule for this call";
    const std::string expected = expectedEnd(*rule, mode, number);
    if (end != expected) return end + " instead of " + expected;
    if (*rule->message == '\0' || matches(messages, rule->message)) return "";
    return std::string("the log lacks \"") + rule->message + "\"";
}

}  // namespace end_to_end
