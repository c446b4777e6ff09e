// Result: a value, or the reason there is none, in words meant for the person at the terminal.
#pragma once

#include <string>
#include <utility>
#include <variant>

namespace offlineframes {

struct Failure {
    std::string text;
    bool misuse = false;  // the command line is wrong: the program ends with status 2
};

template <class T>
class [[nodiscard]] Result {
  public:
    Result(T value) : mState(std::move(value)) {}            // NOLINT: values convert on return
    Result(Failure failure) : mState(std::move(failure)) {}  // NOLINT: as do failures

    bool ok() const { return std::holds_alternative<T>(mState); }
    const T& value() const& { return *std::get_if<T>(&mState); }
    T& value() & { return *std::get_if<T>(&mState); }
    T&& value() && { return std::move(*std::get_if<T>(&mState)); }
    const Failure& failure() const { return *std::get_if<Failure>(&mState); }
    const std::string& error() const { return failure().text; }

  private:
    std::variant<T, Failure> mState;
};

// Outcome of a step that gives nothing back.
struct Done {};

}  // namespace offlineframes
