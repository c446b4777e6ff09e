// The command line of runreport.
#pragma once

#include <offlineframes/result.h>

#include <string>
#include <vector>

#include "report.h"

namespace runreport {

extern const char* const kHelp;

struct Options {
    Run run;
    std::string logFile;
    std::string deviceLogFile;
    std::string traceFile;
    std::string dataFolder;
    std::vector<std::string> explanationsFiles;
    std::vector<std::string> dumps;
    std::string htmlFile;
    std::string jsonFile;
    bool help = false;
};

// Fails, naming the word, for an unknown option, one without a value, a number that is none, and
// when neither --html nor --json is given.
offlineframes::Result<Options> readOptions(const std::vector<std::string>& words);

}  // namespace runreport
