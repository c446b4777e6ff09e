// Fills templates of C++ text.
//
// $name$ in a template is replaced by a value. The lines from "%each name" to its "%end" are
// repeated for each model of a list; what that model does not know is looked up in those around it.
// A condition is a list of one model or none. A line that becomes empty is left out.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace aidlc {

struct Model {
    std::map<std::string, std::string> values;
    std::map<std::string, std::vector<Model>> lists;
};

// A name that no model knows is a fault of the compiler and ends it.
std::string Expand(const std::string& text, const Model& model);

// The list that is a condition.
inline std::vector<Model> If(bool condition) {
    return std::vector<Model>(condition ? 1 : 0);
}

}  // namespace aidlc
