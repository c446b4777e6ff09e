// Positions in .aidl files and the list of complaints about them.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace aidlc {

/** A place in a source file; line and column count from 1. The file name outlives every position.
 */
struct Position {
    const std::string* file = nullptr;
    int line = 1;
    int column = 1;
};

/** Collects complaints in the order they are found. */
class Diagnostics {
  public:
    void Report(const Position& position, const std::string& message);
    bool HasErrors() const { return !mMessages.empty(); }
    /** Each message reads "file:line:column: text". */
    const std::vector<std::string>& Messages() const { return mMessages; }
    void Print(std::ostream& stream) const;

  private:
    std::vector<std::string> mMessages;
};

}  // namespace aidlc
