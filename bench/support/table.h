// A Markdown table on standard output.
#pragma once

#include <string>
#include <vector>

namespace bench {

class Table {
  public:
    explicit Table(std::vector<std::string> heads) : mRows{std::move(heads)} {}

    /** As many cells as heads. */
    void Add(std::vector<std::string> row) { mRows.push_back(std::move(row)); }

    /** Prints with columns in line. */
    void Print() const;

  private:
    std::vector<std::vector<std::string>> mRows;
};

/** "12.34" */
std::string Number(double value, int digits);

/** A ratio beside what it may be at most: "0.21", "<= 0.25", "met" or "MISSED". */
std::vector<std::string> AgainstMark(double ratio, double most);

/** What the numbers were measured on: processors, kernel, compiler, load; as Markdown lines. */
std::string MachineDescription();

}  // namespace bench
