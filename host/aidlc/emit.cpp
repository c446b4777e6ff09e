// Turns checked declarations into NDK C++ text: what the templates can refer to, and the files.
#include "emit.h"

#include <map>
#include <set>

#include "cpp_types.h"
#include "template.h"
#include "templates.h"

namespace aidlc {
namespace {

using Kind = Declaration::Kind;

// Around generated code that calls a deprecated method, so that it compiles without a warning.
constexpr char kQuiet[] =
        "#pragma clang diagnostic push\n"
        "#pragma clang diagnostic ignored \"-Wdeprecated-declarations\"";
constexpr char kLoud[] = "#pragma clang diagnostic pop";

// text as a C++ string literal.
std::string Quote(const std::string& text) {
    std::string result = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') result += '\\';
        result += c;
    }
    return result + "\"";
}

void Append(std::string* list, const std::string& item) {
    *list += (list->empty() ? "" : ", ") + item;
}

Model ArgumentModel(const Argument& argument) {
    const std::string name = ParameterName(argument);
    Model model;
    model.values = {{"type", CppType(argument.type)},
                    {"variable", name},
                    {"start", "{}"},
                    {"write", "AParcel_writeData(_aidl_in.get(), " + name + ")"},
                    {"read", "AParcel_readData(_aidl_in, &" + name + ")"}};
    // The request has the length of an out array, so that the server makes one like it.
    const bool isSized = argument.isOut && argument.type.isArray && argument.type.fixedSize == 0;
    if (isSized) {
        model.values["write"] = "AParcel_writeVectorSize(_aidl_in.get(), *" + name + ")";
        model.values["read"] = "AParcel_resizeVector(_aidl_in, &" + name + ")";
    }
    model.lists["inRequest"] = If(isSized || !argument.isOut);
    return model;
}

Model MethodModel(const Method& method, const std::string& code) {
    const bool hasReturn = method.returnType.name != "void";
    std::string parameters;
    std::string unnamed;
    std::string arguments;
    std::string variableArguments;
    Model model;
    std::vector<Model>& results = model.lists["results"];
    std::vector<Model>& variables = model.lists["variables"];
    const auto addParameter = [&](const std::string& type, const std::string& name, bool isOut) {
        Append(&parameters, type + " " + name);
        Append(&unnamed, type + " /*" + name + "*/");
        Append(&arguments, name);
        Append(&variableArguments, (isOut ? "&" : "") + name);
    };
    if (hasReturn) results.push_back({{{"result", "_aidl_return"}}, {}});
    for (const Argument& argument : method.arguments) {
        const std::string name = ParameterName(argument);
        addParameter(CppParameterType(argument), name, argument.isOut);
        variables.push_back(ArgumentModel(argument));
        if (argument.isOut) results.push_back({{{"result", name}}, {}});
    }
    if (hasReturn) {
        const std::string type = CppType(method.returnType);
        addParameter(type + "*", "_aidl_return", true);
        variables.push_back({{{"type", type},
                              {"variable", "_aidl_return"},
                              {"start", ReturnStart(method.returnType)}},
                             {{"inRequest", If(false)}}});
    }
    const auto& note = method.deprecation;
    model.values = {{"method", method.name},
                    {"code", code},
                    {"parameters", parameters},
                    {"unnamedParameters", unnamed},
                    {"arguments", arguments},
                    {"variableArguments", variableArguments},
                    {"mark", note ? "__attribute__((deprecated(" + Quote(*note) + "))) " : ""},
                    {"quiet", note ? kQuiet : ""},
                    {"loud", note ? kLoud : ""},
                    {"flags", method.isOneway ? "FLAG_ONEWAY" : "0"},
                    {"answer", method.isOneway ? "::ndk::ScopedAStatus::ok()" : "_aidl_result"}};
    model.lists["isOneway"] = If(method.isOneway);
    model.lists["isAnswered"] = If(!method.isOneway);
    model.lists["asksVersion"] = If(method.name == "getInterfaceVersion");
    model.lists["asksHash"] = If(method.name == "getInterfaceHash");
    return model;
}

// A question that every interface answers besides its own methods.
Model QuestionModel(const std::string& name, const std::string& type, const std::string& code) {
    Method method;
    method.name = name;
    method.returnType.name = type;
    method.returnType.basic = FindBasicType(type);
    return MethodModel(method, code);
}

void AddInterface(const Declaration& declaration, const Version& version, Model* model) {
    std::vector<Model> methods;
    std::string names;
    for (const Method& method : declaration.methods) {
        Model one = MethodModel(method, declaration.name + "::TRANSACTION_" + method.name);
        one.values["index"] = std::to_string(methods.size());
        methods.push_back(one);
        names += "\"" + method.name + "\", ";
    }
    model->values["version"] = std::to_string(version.number.value_or(0));
    model->values["hash"] = Quote(version.hash);
    model->values["methodNames"] = names;
    model->values["methodCount"] = std::to_string(methods.size());
    model->lists["methods"] = methods;
    methods.push_back(
            QuestionModel("getInterfaceVersion", "int", "FIRST_CALL_TRANSACTION + 16777214"));
    methods.push_back(
            QuestionModel("getInterfaceHash", "String", "FIRST_CALL_TRANSACTION + 16777213"));
    model->lists["calls"] = methods;
}

void AddEnum(const Declaration& declaration, Model* model) {
    std::set<int64_t> seen;
    std::vector<Model> enumerators;
    for (const Enumerator& enumerator : declaration.enumerators) {
        // Of equal values the first one gives the name.
        const bool isFirst = seen.insert(enumerator.value).second;
        const std::string number = IntegerLiteral(enumerator.value, declaration.isLong);
        enumerators.push_back(
                {{{"value", enumerator.name}, {"number", number}}, {{"isFirst", If(isFirst)}}});
    }
    model->values["backing"] = declaration.isLong ? "int64_t" : "int32_t";
    model->values["valueType"] = CppName(declaration);
    model->values["count"] = std::to_string(enumerators.size());
    model->lists["enumerators"] = enumerators;
}

void AddFields(const Declaration& declaration, Model* model) {
    std::vector<Model> fields;
    std::string types;
    std::string left;
    std::string right;
    for (const Field& field : declaration.fields) {
        fields.push_back({{{"field", field.name},
                           {"value", field.name},
                           {"type", CppType(field.type)},
                           {"initializer", FieldInitializer(field)},
                           {"initial", InitialValue(field)},
                           {"index", std::to_string(fields.size())},
                           {"comma", fields.empty() ? "" : ", "}},
                          {}});
        Append(&types, CppType(field.type));
        Append(&left, field.name);
        Append(&right, "rhs." + field.name);
    }
    model->values["left"] = left;
    model->values["right"] = right;
    for (const char* op : {"==", "!=", "<", ">", "<=", ">="}) {
        model->lists["comparisons"].push_back({{{"op", op}}, {}});
    }
    model->lists["fields"] = fields;
    if (declaration.kind != Kind::kUnion) return;
    model->values["variant"] = "std::variant<" + types + ">";
    model->values["firstInitial"] = InitialValue(declaration.fields.front());
    model->values["valueType"] = CppName(declaration) + "::Tag";
    model->values["count"] = std::to_string(fields.size());
    model->lists["enumerators"] = fields;
}

// The types that a declaration uses, by their headers, so that the order does not depend on
// addresses.
void AddUsedTypes(const Declaration& user, Model* model) {
    std::map<std::string, const Declaration*> headers;
    const auto add = [&](const TypeUse& type) {
        const Declaration* const used = type.declaration;
        if (used && used != &user) headers[HeaderPath(*used, used->name)] = used;
    };
    for (const Field& field : user.fields) add(field.type);
    for (const Method& method : user.methods) {
        add(method.returnType);
        for (const Argument& argument : method.arguments) add(argument.type);
    }
    std::vector<Model>& included = model->lists["included"];
    for (const auto& [header, used] : headers) {
        // Interfaces make circles of headers possible, so classes are declared before they are
        // defined.
        included.push_back({{{"header", header},
                             {"usedNamespace", CppNamespace(*used)},
                             {"usedName", used->name}},
                            {{"isClass", If(used->kind != Kind::kEnum)}}});
    }
}

Model ModelOf(const Declaration& declaration, const Version& version) {
    Model model;
    const std::string base = BaseName(declaration);
    model.values = {{"banner", "// Generated from " + declaration.FullName() +
                                       ": change the .aidl file instead."},
                    {"fullName", declaration.FullName()},
                    {"name", declaration.name},
                    {"base", base},
                    {"namespace", CppNamespace(declaration)},
                    {"mainHeader", HeaderPath(declaration, declaration.name)},
                    {"stubHeader", HeaderPath(declaration, "Bn" + base)},
                    {"proxyHeader", HeaderPath(declaration, "Bp" + base)}};
    model.lists["isInterface"] = If(declaration.kind == Kind::kInterface);
    AddUsedTypes(declaration, &model);
    if (declaration.kind == Kind::kEnum) {
        AddEnum(declaration, &model);
    } else if (declaration.kind == Kind::kInterface) {
        AddInterface(declaration, version, &model);
    } else {
        AddFields(declaration, &model);
    }
    return model;
}

}  // namespace

std::vector<GeneratedFile> Emit(const Declaration& declaration, const Version& version) {
    Model model = ModelOf(declaration, version);
    std::vector<GeneratedFile> files;
    const auto addHeader = [&](const std::string& className, const std::string& text) {
        model.values["className"] = className;
        files.push_back({"include/" + HeaderPath(declaration, className), Expand(text, model)});
    };
    struct Texts {
        std::string header;
        std::string after;
        std::string source;
    };
    const std::string interfaceSource = std::string(kInterfaceSource) + kStubSource + kProxySource;
    const std::map<Kind, Texts> kinds = {
            {Kind::kEnum, {kEnumHeader, kEnumValues, ""}},
            {Kind::kParcelable, {kParcelableHeader, "", kParcelableSource}},
            {Kind::kUnion, {kUnionHeader, kEnumValues, kUnionSource}},
            {Kind::kInterface, {kInterfaceHeader, "", interfaceSource}}};
    const Texts& texts = kinds.at(declaration.kind);
    addHeader(declaration.name, kHeaderStart + texts.header + kNamespaceEnd + texts.after);
    if (declaration.kind == Kind::kInterface) {
        // Their own interface is all that the other two headers use.
        model.lists["included"] = {{{{"header", HeaderPath(declaration, declaration.name)}},
                                    {{"isClass", If(false)}}}};
        const std::string start = kHeaderStart;
        addHeader("Bn" + BaseName(declaration), start + kStubHeader + kNamespaceEnd);
        addHeader("Bp" + BaseName(declaration), start + kProxyHeader + kNamespaceEnd);
    } else {
        addHeader("Bn" + declaration.name, kNoInterface);
        addHeader("Bp" + declaration.name, kNoInterface);
    }
    std::string path = "src/" + HeaderPath(declaration, declaration.name);
    path.replace(path.size() - 2, 2, ".cpp");
    files.push_back({path, Expand(kSourceStart + texts.source + kNamespaceEnd, model)});
    return files;
}

}  // namespace aidlc
