// Result: a value, or a sentence that names what went wrong and what to do about it.
#pragma once

#include <string>
#include <utility>
#include <variant>

namespace base {

struct Failure {
    std::string text;
    bool misuse = false;  // the command line is wrong: the program ends with status 2
    int code = 0;         // the platform's number of the error, for a caller at its border
};

template <class T>
class [[nodiscard]] Result {
  public:
    Result(T value) : m_state(std::move(value)) {}            // NOLINT: values convert on return
    Result(Failure failure) : m_state(std::move(failure)) {}  // NOLINT: as do failures

    bool Ok() const { return std::holds_alternative<T>(m_state); }
    const T& Value() const& { return *std::get_if<T>(&m_state); }
    T& Value() & { return *std::get_if<T>(&m_state); }
    T&& Value() && { return std::move(*std::get_if<T>(&m_state)); }
    const Failure& GetFailure() const { return *std::get_if<Failure>(&m_state); }
    const std::string& Error() const { return GetFailure().text; }

  private:
    std::variant<T, Failure> m_state;
};

// The value of a step that only succeeds or fails.
struct Done {};

}  // namespace base
