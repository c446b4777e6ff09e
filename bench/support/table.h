// A Markdown table on standard output.
#pragma once

#include <string>
#include <vector>

#include "measure.h"

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

/** One table under a heading: every subject's time, its ratio to the subject `baseline`, and the
 * mark that the ratio has to meet (0 or missing: none). */
void PrintComparison(const std::string& title, const std::vector<Subject>& subjects,
                     const std::vector<double>& milliseconds, size_t baseline,
                     const std::vector<double>& marks);

/** The same of one time that has to be at most `most` milliseconds. */
void PrintMilliseconds(const std::string& title, const std::string& name, double milliseconds,
                       double most);

/** What the numbers were measured on: processors, kernel, compiler, load; as Markdown lines. */
std::string MachineDescription();

}  // namespace bench
