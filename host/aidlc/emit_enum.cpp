// Emits enums: the class, toString and the list of values.
#include <set>

#include "cpp_types.h"
#include "emit.h"
#include "text.h"

namespace aidlc {
namespace {

const char* const kEnum = R"(enum class $name$ : $backing$ {
$enumerators$
};

[[nodiscard]] static inline std::string toString($name$ val) {
    switch (val) {
$cases$
    }
    return std::to_string(static_cast<$backing$>(val));
}
)";

const char* const kValues = R"(
namespace ndk::internal {

template <>
constexpr inline std::array<$type$, $count$> enum_values<$type$> = {
$values$
};

}  // namespace ndk::internal
)";

}  // namespace

std::string EnumBody(const Declaration& declaration) {
    std::string enumerators;
    std::string cases;
    std::set<int64_t> seen;
    for (const Enumerator& enumerator : declaration.enumerators) {
        enumerators += "    " + enumerator.name + " = " +
                       IntegerLiteral(enumerator.value, declaration.backing == Builtin::Long) +
                       ",\n";
        // Of equal values the first one gives the name.
        if (seen.insert(enumerator.value).second) {
            cases += "        case " + declaration.name + "::" + enumerator.name +
                     ":\n            return " + Quote(enumerator.name) + ";\n";
        }
    }
    return Expand(kEnum, {{"name", declaration.name},
                          {"backing", CppBackingType(declaration)},
                          {"enumerators", enumerators},
                          {"cases", cases}});
}

std::string EnumValues(const std::string& cppName, const std::vector<std::string>& enumerators) {
    std::string values;
    for (const std::string& enumerator : enumerators) {
        values += "        " + cppName + "::" + enumerator + ",\n";
    }
    return Expand(
            kValues,
            {{"type", cppName}, {"count", std::to_string(enumerators.size())}, {"values", values}});
}

}  // namespace aidlc
