// What a check is, and what it finds.
#pragma once

#include <chrono>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

namespace conformance {

class Device;

using std::chrono::milliseconds;

// The longest wait of a check, and the test client's for a shutter or a result.
inline constexpr milliseconds kWait(5000);
// How long something is awaited that must not come, or that must come soon.
inline constexpr milliseconds kSecond(1000);

enum class Outcome { kOk, kFail, kWarn, kSkip };

struct Verdict {
    Outcome outcome = Outcome::kOk;
    std::string expected;  // of a failure
    std::string came;      // of a failure; otherwise the remark or the reason

    bool Good() const { return outcome == Outcome::kOk; }
};

inline Verdict Fail(std::string expected, std::string came) {
    return {Outcome::kFail, std::move(expected), std::move(came)};
}
inline Verdict Warn(std::string remark) {
    return {Outcome::kWarn, "", std::move(remark)};
}
inline Verdict Skip(std::string reason) {
    return {Outcome::kSkip, "", std::move(reason)};
}
inline Verdict Require(bool holds, std::string expected, std::string came) {
    return holds ? Verdict() : Fail(std::move(expected), std::move(came));
}
inline Verdict Better(bool holds, std::string remark) {
    return holds ? Verdict() : Warn(std::move(remark));
}

// One text of several parts.
template <class... Parts>
std::string Say(const Parts&... parts) {
    std::ostringstream text;
    (text << ... << parts);
    return text.str();
}

using Run = std::function<Verdict(Device&)>;

struct Check {
    std::string name;
    std::string rule;
    Run run;
    std::string group = {};
};

using Checks = std::vector<Check>;

extern const Checks kRegistrationChecks, kSessionChecks, kConfigurationChecks, kProcessChecks,
        kRequestChecks, kContentChecks, kLendingChecks, kFenceChecks, kEnduranceChecks;
extern const Checks kPhysicsChecks;  // of a service with the reference service's physics

}  // namespace conformance
