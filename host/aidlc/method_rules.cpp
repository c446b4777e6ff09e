// Rules about interfaces: names, directions and oneway.
#include "checker.h"

namespace aidlc {
namespace {

bool CanComeOut(const TypeReference& type) {
    return type.IsArray() || (type.declaration != nullptr &&
                              (type.declaration->kind == Declaration::Kind::Parcelable ||
                               type.declaration->kind == Declaration::Kind::Union));
}

/** Whether C++ would take a method of this name for a constructor. */
bool IsClassName(const Declaration& interface, const std::string& name) {
    const std::string base = interface.name.substr(1);
    return name == interface.name || name == interface.name + "Default" || name == "Bn" + base ||
           name == "Bp" + base;
}

}  // namespace

void Checker::CheckInterface(Declaration* declaration) {
    static const std::set<std::string> reserved = {"asBinder",
                                                   "isRemote",
                                                   "dump",
                                                   "handleShellCommand",
                                                   "ref",
                                                   "make",
                                                   "fromBinder",
                                                   "writeToParcel",
                                                   "descriptor",
                                                   "version",
                                                   "hash",
                                                   "readFromParcel",
                                                   "setDefaultImpl",
                                                   "getDefaultImpl",
                                                   "getInterfaceVersion",
                                                   "getInterfaceHash",
                                                   "asInterface",
                                                   "defineClass",
                                                   "createBinder",
                                                   "makeServiceName"};
    if (declaration->name.size() < 2 || declaration->name[0] != 'I') {
        Fail(declaration->position,
             "the name of an interface starts with 'I': I" + declaration->name);
    }
    std::set<std::string> names;
    for (Method& method : declaration->methods) {
        CheckName(method.name, method.position, "method", &names);
        if (reserved.count(method.name) != 0) {
            Fail(method.position, "'" + method.name +
                                          "' is a member of every generated interface "
                                          "and cannot name a method");
        } else if (IsClassName(*declaration, method.name)) {
            Fail(method.position,
                 "'" + method.name + "' is the name of a generated class and cannot name a method");
        }
        CheckMethod(*declaration->document, &method);
    }
}

void Checker::CheckMethod(const Document& document, Method* method) {
    Resolve(document, &method->returnType);
    if (method->oneway && method->returnType.builtin != Builtin::Void) {
        Fail(method->returnType.position, "oneway method '" + method->name + "' must return void");
    }
    std::set<std::string> names;
    for (Argument& argument : method->arguments) {
        CheckName(argument.name, argument.position, "argument", &names);
        if (Resolve(document, &argument.type)) {
            CheckArgument(*method, argument);
        }
    }
}

void Checker::CheckArgument(const Method& method, const Argument& argument) {
    const TypeReference& type = argument.type;
    if (type.builtin == Builtin::Void) {
        Fail(type.position, "argument '" + argument.name + "' cannot be void");
        return;
    }
    if (CanComeOut(type) && argument.direction == Argument::Direction::Unspecified) {
        Fail(type.position,
             "argument '" + argument.name + "' is an array or a parcelable: say in, out or inout");
    }
    if (!argument.ComesOut()) {
        return;
    }
    if (!CanComeOut(type)) {
        Fail(type.position,
             "argument '" + argument.name + "' of type " + type.name + " can only be in");
    } else if (method.oneway) {
        Fail(type.position, "oneway method '" + method.name + "' cannot have the out argument '" +
                                    argument.name + "'");
    }
}

}  // namespace aidlc
