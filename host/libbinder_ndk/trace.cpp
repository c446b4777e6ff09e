// Lines of the transaction trace.
#include "trace.h"

#include <fcntl.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "ibinder.h"
#include "log.h"
#include "parcel.h"
#include "status_names.h"
#include "wire_format.h"

namespace hostbinder {

namespace {

int ReadTraceDescriptor() {
    const char* text = getenv("STANDIN_BINDER_TRACE_FD");
    if (text == nullptr || text[0] == '\0') return -1;
    char* end = nullptr;
    const long fd = strtol(text, &end, 10);
    if (*end != '\0' || fd < 0 || fcntl(static_cast<int>(fd), F_GETFD) < 0) {
        BINDER_LOGE("STANDIN_BINDER_TRACE_FD=%s is not an open descriptor: no trace", text);
        return -1;
    }
    return static_cast<int>(fd);
}

int TraceDescriptor() {
    static const int fd = ReadTraceDescriptor();
    return fd;
}

std::string MethodName(const AIBinder_Class* clazz, transaction_code_t code) {
    if (code == kPingCode) return "(ping)";
    if (code == kDescriptorCode) return "(descriptor)";
    const std::vector<std::string>* names =
            clazz == nullptr ? nullptr : clazz->transactionNames.load();
    const size_t index = code - FIRST_CALL_TRANSACTION;
    return names != nullptr && index < names->size() ? (*names)[index] : std::to_string(code);
}

std::string TimeOfDay() {
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    tm local;
    localtime_r(&now.tv_sec, &local);
    char text[32];
    snprintf(text, sizeof(text), "%02d:%02d:%02d.%06ld", local.tm_hour, local.tm_min, local.tm_sec,
             now.tv_nsec / 1000);
    return text;
}

}  // namespace

TracedCall::TracedCall(Direction direction, const std::string& peer, const AIBinder_Class* clazz,
                       transaction_code_t code, binder_flags_t flags, const AParcel& request)
    : m_enabled(TraceDescriptor() >= 0) {
    if (!m_enabled) return;
    m_what = TimeOfDay() + " " + std::to_string(getpid()) +
             (direction == Direction::kOut ? " -> " : " <- ") + peer + " " +
             (clazz == nullptr ? "?" : clazz->descriptor) + "." + MethodName(clazz, code) +
             ((flags & FLAG_ONEWAY) != 0 ? " oneway " : " ") + std::to_string(request.Size()) +
             " bytes " + std::to_string(request.DescriptorCount()) + " fds ";
    m_start = std::chrono::steady_clock::now();
}

void TracedCall::End(binder_status_t status) {
    if (!m_enabled) return;
    const auto took = std::chrono::steady_clock::now() - m_start;
    const auto micros = std::chrono::duration_cast<std::chrono::microseconds>(took).count();
    const std::string line = m_what + std::to_string(micros) + " us " + StatusName(status) + "\n";
    // One write, so that lines of several processes stay whole. A trace that cannot be written is
    // no reason to fail the call.
    ssize_t written = 0;
    do {
        written = write(TraceDescriptor(), line.data(), line.size());
    } while (written < 0 && errno == EINTR);
}

}  // namespace hostbinder
