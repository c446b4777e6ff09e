// Resolves the types of all declarations and checks the rules that the grammar does not express.
#include "checker.h"

#include <algorithm>
#include <set>
#include <sstream>

#include "constants.h"
#include "cpp_types.h"

namespace aidlc {
namespace {

using Kind = Declaration::Kind;

constexpr char kCppKeywords[] =
        " alignas alignof and and_eq asm auto bitand bitor bool break case catch char char8_t "
        "char16_t char32_t class co_await co_return co_yield compl concept const consteval "
        "constexpr constinit const_cast continue decltype default delete do double dynamic_cast "
        "else enum explicit export extern false float for friend goto if inline int long mutable "
        "namespace new noexcept not not_eq nullptr operator or or_eq private protected public "
        "register reinterpret_cast requires return short signed sizeof static static_assert "
        "static_cast struct switch template this thread_local throw true try typedef typeid "
        "typename union unsigned using virtual void volatile wchar_t while xor xor_eq ";

// Members of every generated class of fields, and of every generated interface.
constexpr char kRecordMembers[] =
        " descriptor fixed_size readFromParcel writeToParcel toString Tag make get set getTag "
        "_value ";
constexpr char kInterfaceMembers[] =
        " asBinder isRemote dump handleShellCommand ref make fromBinder writeToParcel descriptor "
        "version hash readFromParcel setDefaultImpl getDefaultImpl getInterfaceVersion "
        "getInterfaceHash asInterface defineClass createBinder makeServiceName ";

bool IsOneOf(const std::string& words, const std::string& name) {
    return words.find(" " + name + " ") != std::string::npos;
}

bool IsKind(const TypeUse& type, Kind kind) {
    return type.declaration && type.declaration->kind == kind;
}

// What a type name means in a file: an import, or a type of the same package.
std::string FullName(const Declaration& user, const std::string& name) {
    if (name.find('.') != std::string::npos) return name;
    for (const Import& import : user.imports) {
        if (import.name.substr(import.name.rfind('.') + 1) == name) return import.name;
    }
    return user.package + "." + name;
}

class Checker {
  public:
    explicit Checker(SourceTree* tree) : m_tree(tree) {}

    base::Result<base::Done> CheckAll() {
        // Looking names up reads further files, so the end moves.
        for (size_t i = 0; i < m_tree->Declarations().size(); i++) {
            CheckDeclaration(m_tree->Declarations()[i].get());
        }
        for (const std::unique_ptr<Declaration>& declaration : m_tree->Declarations()) {
            m_current = declaration.get();
            CheckContainment(*declaration);
        }
        if (m_faults.empty()) return base::Done{};
        return base::Failure{m_faults};
    }

  private:
    void AddFault(const std::string& line) { m_faults += (m_faults.empty() ? "" : "\n") + line; }
    void Fail(const Position& position, const std::string& message) {
        AddFault(Located(m_current->file, position, message));
    }

    void CheckDeclaration(Declaration* current) {
        m_current = current;
        Declaration& declaration = *current;
        std::set<std::string> names;
        std::istringstream parts(declaration.package);
        for (std::string part; std::getline(parts, part, '.');) {
            std::set<std::string> unseen;  // a part may come twice
            CheckName(part, declaration.packagePosition, "part of a package", " std ", &unseen);
        }
        CheckName(declaration.name, declaration.position, "type", "", &names);
        for (const Import& import : declaration.imports) Find(import.position, import.name);
        std::set<std::string> enumerators;  // one may be named like its enum
        for (const Enumerator& enumerator : declaration.enumerators) {
            CheckName(enumerator.name, enumerator.position, "enumerator", "", &enumerators);
        }
        for (Field& field : declaration.fields) {
            CheckName(field.name, field.position, "field", kRecordMembers, &names);
            CheckField(&field);
        }
        const bool isInterface = declaration.kind == Kind::kInterface;
        if (isInterface && (declaration.name[0] != 'I' || declaration.name.size() < 2)) {
            Fail(declaration.position,
                 "the name of an interface starts with 'I': I" + declaration.name);
        }
        // C++ would take a method of such a name for a constructor.
        const std::string classes = " " + declaration.name + "Default Bn" + BaseName(declaration) +
                                    " Bp" + BaseName(declaration);
        for (Method& method : declaration.methods) {
            CheckName(method.name, method.position, "method", classes + kInterfaceMembers, &names);
            CheckMethod(&method);
        }
        const bool needsMembers =
                declaration.kind == Kind::kEnum || declaration.kind == Kind::kUnion;
        if (needsMembers && declaration.enumerators.empty() && declaration.fields.empty()) {
            Fail(declaration.position, declaration.name + " needs at least one member");
        }
    }

    // Null after a fault. A type that is not there is named once, at its import or its first use.
    const Declaration* Find(const Position& position, const std::string& fullName) {
        const base::Result<Declaration*> found = m_tree->Find(fullName);
        if (found.Ok() && found.Value()) return found.Value();
        if (!m_missing.insert(fullName).second) return nullptr;
        if (found.Ok()) {
            Fail(position, "unknown type " + fullName +
                                   ": it is not built in, and no -I folder has its file");
        } else {
            AddFault(found.Error());
        }
        return nullptr;
    }

    // taken: words, each between blanks, that the generated C++ uses for itself. seen: names of the
    // same scope so far.
    void CheckName(const std::string& name, const Position& position, const std::string& what,
                   const std::string& taken, std::set<std::string>* seen) {
        if (IsOneOf(kCppKeywords, name)) {
            Fail(position, "'" + name + "' is a C++ keyword and cannot name a " + what);
        } else if (IsOneOf(taken, name) || name.compare(0, 6, "_aidl_") == 0) {
            Fail(position,
                 "'" + name + "' has a meaning in the generated code: rename the " + what);
        } else if (!seen->insert(name).second) {
            Fail(position, what + " '" + name + "' is declared twice");
        }
    }

    // False after a fault that makes further questions about the type useless.
    bool Resolve(TypeUse* type, bool canBeVoid) {
        type->basic = FindBasicType(type->name);
        const bool isPlainByte = type->basic && type->basic->bits == 8;
        if (!type->basic) {
            type->declaration = Find(type->position, FullName(*m_current, type->name));
            if (!type->declaration) return false;
        }
        if (type->name == "void" && !canBeVoid) Fail(type->position, "only a result can be void");
        const bool hasArrays =
                type->basic ? type->basic->cppElement != nullptr : !IsKind(*type, Kind::kInterface);
        if (type->isArray && (!hasArrays || (type->fixedSize != 0 && !isPlainByte))) {
            Fail(type->position, std::string(type->fixedSize != 0 ? "a fixed array" : "an array") +
                                         " of " + type->name + " is not supported here");
            return false;
        }
        return true;
    }

    void CheckField(Field* field) {
        const TypeUse& type = field->type;
        if (!Resolve(&field->type, false)) return;
        if (IsKind(type, Kind::kInterface)) {
            Fail(type.position, "a field of type " + type.name + " is not supported here");
        } else if (field->defaultValue) {
            CheckDefault(type, *field->defaultValue);
        }
    }

    void CheckDefault(const TypeUse& type, const Default& value) {
        const int bits = type.basic ? type.basic->bits : 0;
        if (type.isArray) {
            Fail(value.position, "a default of an array is not supported here");
        } else if (IsKind(type, Kind::kEnum)) {
            const Declaration& declaration = *type.declaration;
            const size_t dot = std::min(value.text.rfind('.'), value.text.size());
            const std::string name =
                    FullName(*m_current, value.text.substr(0, dot)) + value.text.substr(dot);
            const auto& known = declaration.enumerators;
            if (std::none_of(known.begin(), known.end(), [&](const Enumerator& enumerator) {
                    return declaration.FullName() + "." + enumerator.name == name;
                })) {
                Fail(value.position, "the default is not an enumerator " + type.name + ".X");
            }
        } else if (bits != 0) {
            if (!value.text.empty() || !Fits(value.number, bits)) {
                Fail(value.position,
                     "the default is not an integer of " + std::to_string(bits) + " bits");
            }
        } else if (type.name != "boolean") {
            Fail(value.position, "a default of type " + type.name + " is not supported here");
        } else if (value.text != "true" && value.text != "false") {
            Fail(value.position, "the default of a boolean is true or false");
        }
    }

    void CheckContainment(const Declaration& record) {
        std::set<const Declaration*> seen;
        std::vector<const Declaration*> open = {&record};
        while (!open.empty()) {
            const Declaration* const current = open.back();
            open.pop_back();
            for (const Field& field : current->fields) {
                const Declaration* const inner = field.type.declaration;
                if (inner == &record) {
                    Fail(record.position, record.name + " contains itself through " +
                                                  current->name + "." + field.name);
                    return;
                }
                if (inner && seen.insert(inner).second) open.push_back(inner);
            }
        }
    }

    void CheckMethod(Method* method) {
        Resolve(&method->returnType, true);
        if (method->isOneway && method->returnType.name != "void") {
            Fail(method->returnType.position,
                 "oneway method '" + method->name + "' must return void");
        }
        std::set<std::string> names;
        for (Argument& argument : method->arguments) {
            CheckName(argument.name, argument.position, "argument", "", &names);
            if (Resolve(&argument.type, false)) CheckArgument(*method, argument);
        }
    }

    void CheckArgument(const Method& method, const Argument& argument) {
        const TypeUse& type = argument.type;
        const std::string which = "argument '" + argument.name + "'";
        const bool canComeOut =
                type.isArray || IsKind(type, Kind::kParcelable) || IsKind(type, Kind::kUnion);
        if (canComeOut && !argument.hasDirection) {
            Fail(type.position, which + " is an array or a parcelable: say in or out");
        } else if (argument.isOut && !canComeOut) {
            Fail(type.position, which + " of type " + type.name + " can only be in");
        } else if (argument.isOut && method.isOneway) {
            Fail(type.position, which + " of a oneway method cannot be out");
        }
    }

    SourceTree* m_tree;
    const Declaration* m_current = nullptr;  // the one being checked
    std::set<std::string> m_missing;         // full names of types
    std::string m_faults;                    // lines
};

}  // namespace

base::Result<base::Done> Check(SourceTree* tree) {
    return Checker(tree).CheckAll();
}

}  // namespace aidlc
