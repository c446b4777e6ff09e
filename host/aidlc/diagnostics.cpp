// Collects and prints complaints as "file:line:column: text".
#include "diagnostics.h"

#include <ostream>

namespace aidlc {

void Diagnostics::Report(const Position& position, const std::string& message) {
    const std::string file = position.file == nullptr ? "<command line>" : *position.file;
    mMessages.push_back(file + ":" + std::to_string(position.line) + ":" +
                        std::to_string(position.column) + ": " + message);
}

void Diagnostics::Print(std::ostream& stream) const {
    for (const std::string& message : mMessages) {
        stream << message << "\n";
    }
}

}  // namespace aidlc
