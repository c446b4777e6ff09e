// Lines of the transaction trace.
#include "trace.h"

#include <fcntl.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "ibinder.h"
#include "log.h"
#include "parcel.h"
#include "status_names.h"
#include "wire_format.h"

namespace hostbinder {

namespace {

constexpr size_t kMaxMessage = 300;  // bytes

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

// A message from another process, in one line and cut between two characters.
std::string OneLine(std::string text) {
    if (text.size() > kMaxMessage) {
        size_t end = kMaxMessage;
        while (end > 0 && (text[end] & 0xc0) == 0x80) --end;
        text.resize(end);
    }
    const auto isControl = [](char c) { return static_cast<uint8_t>(c) < ' ' || c == '\x7f'; };
    std::replace_if(text.begin(), text.end(), isControl, ' ');
    return text;
}

// ", answered ..." if the reply begins with a status that is not OK.
std::string AnswerOf(const AParcel& reply) {
    // Only generated code begins every reply with a status; other replies have none or any number.
    int32_t exception = EX_NONE;
    if (reply.Read(&exception) != STATUS_OK || exception >= EX_NONE || exception < EX_PARCELABLE) {
        return "";
    }
    reply.SetPosition(0);
    AStatus* read = nullptr;
    if (AParcel_readStatusHeader(&reply, &read) != STATUS_OK) return "";
    const std::unique_ptr<AStatus, void (*)(AStatus*)> status(read, AStatus_delete);
    std::string text = std::string(", answered ") + ExceptionName(exception);
    if (exception == EX_SERVICE_SPECIFIC) {
        text += " " + std::to_string(AStatus_getServiceSpecificError(read));
    }
    const std::string message = OneLine(AStatus_getMessage(read));
    return message.empty() ? text : text + ": " + message;
}

}  // namespace

TracedCall::TracedCall(Direction direction, const std::string& peer, const AIBinder_Class* clazz,
                       transaction_code_t code, binder_flags_t flags, const AParcel& request)
    : m_enabled(TraceDescriptor() >= 0) {
    if (!m_enabled) return;
    m_what = TimeOfDay() + " " + std::to_string(getpid()) + " " + std::to_string(gettid()) +
             (direction == Direction::kOut ? " -> " : " <- ") + peer + " " +
             (clazz == nullptr ? "?" : clazz->descriptor) + "." + MethodName(clazz, code) +
             ((flags & FLAG_ONEWAY) != 0 ? " oneway " : " ") + std::to_string(request.Size()) +
             " bytes " + std::to_string(request.DescriptorCount()) + " fds ";
    WriteLine("begins");
    m_start = std::chrono::steady_clock::now();
}

void TracedCall::End(binder_status_t status, const AParcel& reply) const {
    if (!m_enabled) return;
    const auto took = std::chrono::steady_clock::now() - m_start;
    const auto micros = std::chrono::duration_cast<std::chrono::microseconds>(took).count();
    const size_t position = reply.Position();
    reply.SetPosition(0);
    WriteLine(std::to_string(micros) + " us " + StatusName(status) + AnswerOf(reply));
    reply.SetPosition(position);
}

void TracedCall::WriteLine(const std::string& end) const {
    const std::string line = m_what + end + "\n";
    // One write, so that lines of several processes stay whole. A trace that cannot be written is
    // no reason to fail the call.
    ssize_t written = 0;
    do {
        written = write(TraceDescriptor(), line.data(), line.size());
    } while (written < 0 && errno == EINTR);
}

}  // namespace hostbinder
