// Puts the files of a declaration together: banners, includes, namespaces.
#include "emit.h"

#include <algorithm>
#include <map>
#include <set>

#include "cpp_types.h"
#include "text.h"

namespace aidlc {
namespace {

const char* const kHeader = R"($banner$
#pragma once

$includes$

$forwards$
namespace $namespace$ {

$body$
}  // namespace $namespace$
$after$
)";

const char* const kSource = R"($banner$
$includes$

namespace $namespace$ {

$body$
}  // namespace $namespace$
)";

// The device's C library aborts there; elsewhere the message has no one to print it.
const char* const kAssert = R"(
#ifndef __BIONIC__
#ifndef __assert2
#define __assert2(file, line, function, message) ((void)0)
#endif
#endif
)";

std::string Banner(const Declaration& declaration) {
    return "// Generated from " + declaration.CanonicalName() + ": change the .aidl file instead.";
}

std::string Includes(const std::vector<std::string>& headers) {
    std::string text;
    for (const std::string& header : headers) {
        text += "#include <" + header + ">\n";
    }
    return text;
}

/** Other declared types by their header, so that the order does not depend on addresses. */
using ReferenceMap = std::map<std::string, const Declaration*>;

void AddReference(const TypeReference& type, const Declaration& user, ReferenceMap* references) {
    if (type.declaration != nullptr && type.declaration != &user) {
        (*references)[HeaderPath(*type.declaration, type.declaration->name)] = type.declaration;
    }
}

ReferenceMap References(const Declaration& declaration) {
    ReferenceMap references;
    for (const Field& field : declaration.fields) {
        AddReference(field.type, declaration, &references);
    }
    for (const Method& method : declaration.methods) {
        AddReference(method.returnType, declaration, &references);
        for (const Argument& argument : method.arguments) {
            AddReference(argument.type, declaration, &references);
        }
    }
    return references;
}

std::vector<std::string> MainIncludes(const Declaration& declaration) {
    std::vector<std::string> system = {"array",    "cstdint", "memory",
                                       "optional", "string",  "vector"};
    std::vector<std::string> binder;
    switch (declaration.kind) {
        case Declaration::Kind::Enum:
            binder = {"android/binder_enums.h"};
            break;
        case Declaration::Kind::Interface:
            binder = {"android/binder_interface_utils.h", "android/binder_parcel_utils.h"};
            break;
        case Declaration::Kind::Union:
            system.insert(system.end(), {"type_traits", "utility", "variant"});
            binder = {"android/binder_enums.h"};
            [[fallthrough]];
        case Declaration::Kind::Parcelable:
            system.insert(system.end(), {"sstream", "tuple"});
            binder.insert(binder.end(),
                          {"android/binder_interface_utils.h", "android/binder_parcel_utils.h",
                           "android/binder_parcelable_utils.h", "android/binder_to_string.h"});
            break;
    }
    std::sort(system.begin(), system.end());
    std::vector<std::string> headers = system;
    headers.insert(headers.end(), binder.begin(), binder.end());
    for (const auto& [header, reference] : References(declaration)) {
        headers.push_back(header);
    }
    return headers;
}

/** Interfaces make circles of headers possible, so names are declared before the classes. */
std::string ForwardDeclarations(const Declaration& declaration) {
    std::set<std::string> lines;
    for (const auto& [header, reference] : References(declaration)) {
        if (reference->kind != Declaration::Kind::Enum) {
            lines.insert("namespace " + CppNamespace(*reference) + " { class " + reference->name +
                         "; }\n");
        }
    }
    std::string text;
    for (const std::string& line : lines) {
        text += line;
    }
    return text.empty() ? text : text + "\n";
}

std::string UnionTagValues(const Declaration& declaration) {
    std::vector<std::string> names;
    for (const Field& field : declaration.fields) {
        names.push_back(field.name);
    }
    return EnumValues(CppName(declaration) + "::Tag", names);
}

GeneratedFile MainHeader(const Declaration& declaration, const EmitOptions& options) {
    std::string body;
    std::string after;
    std::string includes = Includes(MainIncludes(declaration));
    switch (declaration.kind) {
        case Declaration::Kind::Enum: {
            std::vector<std::string> names;
            for (const Enumerator& enumerator : declaration.enumerators) {
                names.push_back(enumerator.name);
            }
            body = EnumBody(declaration);
            after = EnumValues(CppName(declaration), names);
            break;
        }
        case Declaration::Kind::Parcelable:
            body = ParcelableBody(declaration);
            break;
        case Declaration::Kind::Union:
            includes += kAssert;
            body = UnionBody(declaration);
            after = UnionTagValues(declaration);
            break;
        case Declaration::Kind::Interface:
            body = InterfaceBody(declaration, options);
            break;
    }
    return {"include/" + HeaderPath(declaration, declaration.name),
            Expand(kHeader, {{"banner", Banner(declaration)},
                             {"includes", includes},
                             {"forwards", ForwardDeclarations(declaration)},
                             {"namespace", CppNamespace(declaration)},
                             {"body", body},
                             {"after", after}})};
}

GeneratedFile EmptySideHeader(const Declaration& declaration, const std::string& prefix) {
    return {"include/" + HeaderPath(declaration, prefix + declaration.name),
            Banner(declaration) + "\n#error " + declaration.CanonicalName() +
                    " is no interface: there is no " + prefix + " class\n"};
}

GeneratedFile SideHeader(const Declaration& declaration, const std::string& prefix,
                         const std::string& body) {
    const std::vector<std::string> headers = {"atomic",
                                              "cstdint",
                                              "memory",
                                              "mutex",
                                              "string",
                                              "android/binder_ibinder.h",
                                              HeaderPath(declaration, declaration.name)};
    return {"include/" + HeaderPath(declaration, prefix + BaseName(declaration)),
            Expand(kHeader, {{"banner", Banner(declaration)},
                             {"includes", Includes(headers) + (prefix == "Bn" ? kAssert : "")},
                             {"forwards", ""},
                             {"namespace", CppNamespace(declaration)},
                             {"body", body},
                             {"after", ""}})};
}

GeneratedFile SourceFile(const Declaration& declaration, const EmitOptions& options) {
    std::vector<std::string> headers = {HeaderPath(declaration, declaration.name)};
    std::string body;
    switch (declaration.kind) {
        case Declaration::Kind::Enum:
            break;
        case Declaration::Kind::Parcelable:
            body = ParcelableSource(declaration);
            break;
        case Declaration::Kind::Union:
            body = UnionSource(declaration);
            break;
        case Declaration::Kind::Interface:
            headers.push_back(HeaderPath(declaration, "Bn" + BaseName(declaration)));
            headers.push_back(HeaderPath(declaration, "Bp" + BaseName(declaration)));
            headers.insert(headers.end(),
                           {"android/binder_stability.h", "cstring", "host_binder_trace.h"});
            body = InterfaceSource(declaration, options) + "\n" + StubSource(declaration, options) +
                   "\n" + ProxySource(declaration, options);
            break;
    }
    std::string path = "src/" + HeaderPath(declaration, declaration.name);
    path.replace(path.size() - 2, 2, ".cpp");
    return {path, Expand(kSource, {{"banner", Banner(declaration)},
                                   {"includes", Includes(headers)},
                                   {"namespace", CppNamespace(declaration)},
                                   {"body", body}})};
}

}  // namespace

std::vector<GeneratedFile> Emit(const Declaration& declaration, const EmitOptions& options) {
    std::vector<GeneratedFile> files = {MainHeader(declaration, options)};
    if (declaration.kind == Declaration::Kind::Interface) {
        files.push_back(SideHeader(declaration, "Bn", StubBody(declaration, options)));
        files.push_back(SideHeader(declaration, "Bp", ProxyBody(declaration, options)));
    } else {
        files.push_back(EmptySideHeader(declaration, "Bn"));
        files.push_back(EmptySideHeader(declaration, "Bp"));
    }
    files.push_back(SourceFile(declaration, options));
    return files;
}

std::string Comparisons(const std::string& name, const std::string& left,
                        const std::string& right) {
    std::string text;
    for (const char* op : {"==", "!=", "<", ">", "<=", ">="}) {
        text +=
                Expand("    bool operator$op$([[maybe_unused]] const $name$& rhs) const {\n"
                       "        return $left$ $op$ $right$;\n    }\n",
                       {{"op", op}, {"name", name}, {"left", left}, {"right", right}});
    }
    return text;
}

std::string MethodSignature(const Method& method, const std::string& name) {
    std::vector<std::string> parameters;
    for (const Argument& argument : method.arguments) {
        parameters.push_back(CppParameter(argument));
    }
    if (method.returnType.builtin != Builtin::Void) {
        parameters.push_back(CppType(method.returnType) + "* _aidl_return");
    }
    return "::ndk::ScopedAStatus " + name + "(" + Join(parameters, ", ") + ")";
}

std::string MethodDeclaration(const Method& method, const std::string& tail) {
    const std::string mark =
            method.deprecated
                    ? "__attribute__((deprecated(" + Quote(Escape(method.deprecationNote)) + "))) "
                    : "";
    return "    " + mark + MethodSignature(method, method.name) + tail + ";\n";
}

std::string CallArguments(const Method& method) {
    std::vector<std::string> names;
    for (const Argument& argument : method.arguments) {
        names.push_back(ParameterName(argument));
    }
    if (method.returnType.builtin != Builtin::Void) {
        names.push_back("_aidl_return");
    }
    return Join(names, ", ");
}

std::string WithoutDeprecationWarnings(const std::string& text) {
    return "#pragma clang diagnostic push\n"
           "#pragma clang diagnostic ignored \"-Wdeprecated-declarations\"\n" +
           text + "#pragma clang diagnostic pop\n";
}

}  // namespace aidlc
