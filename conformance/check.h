// What a check is, and what it finds.
#pragma once

#include <chrono>
#include <sstream>
#include <string>
#include <vector>

namespace conformance {

class Device;

// The longest that anything is waited for: as long as the test client waits for a shutter or
// result.
inline constexpr std::chrono::milliseconds kWait(5000);

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

// One text of several parts.
template <class... Parts>
std::string Say(const Parts&... parts) {
    std::ostringstream text;
    (text << ... << parts);
    return text.str();
}

struct Check {
    const char* name;  // "group.what-holds"
    const char* rule;  // one sentence
    const char* cure;  // for the service's author
    Verdict (*run)(Device& device);
};

using Checks = std::vector<Check>;

// The groups, in the order in which they run.
Checks RegistrationChecks();
Checks SessionChecks();
Checks ConfigurationChecks();
Checks ProcessChecks();
Checks RequestChecks();
Checks ContentChecks();
Checks LendingChecks();
Checks FenceChecks();
Checks EnduranceChecks();
Checks PhysicsChecks();  // only of a service that makes the reference service's pictures

}  // namespace conformance
