// Rules about the use of types: resolution, @nullable and fields.
#include <utility>

#include "checker.h"

namespace aidlc {
namespace {

constexpr int64_t kMaxFixedArraySize = 1 << 20;

Builtin BuiltinByName(const std::string& name) {
    static const std::pair<const char*, Builtin> names[] = {
            {"void", Builtin::Void},
            {"boolean", Builtin::Boolean},
            {"byte", Builtin::Byte},
            {"char", Builtin::Char},
            {"int", Builtin::Int},
            {"long", Builtin::Long},
            {"float", Builtin::Float},
            {"double", Builtin::Double},
            {"String", Builtin::String},
            {"IBinder", Builtin::IBinder},
            {"ParcelFileDescriptor", Builtin::ParcelFileDescriptor}};
    for (const auto& [known, builtin] : names) {
        if (name == known) {
            return builtin;
        }
    }
    return Builtin::None;
}

bool IsPrimitive(Builtin builtin) {
    return builtin == Builtin::Boolean || builtin == Builtin::Byte || builtin == Builtin::Char ||
           builtin == Builtin::Int || builtin == Builtin::Long || builtin == Builtin::Float ||
           builtin == Builtin::Double;
}

}  // namespace

bool Checker::Resolve(const Document& document, TypeReference* type) {
    type->builtin = BuiltinByName(type->name);
    if (type->builtin == Builtin::None) {
        type->declaration = mTree->Lookup(document, type->name);
        if (type->declaration == nullptr) {
            if (!mTree->IsReported(document, type->name)) {
                Fail(type->position,
                     "unknown type '" + type->name + "': import it or check the spelling");
            }
            return false;
        }
        if (document.declaration.vintfStability && !type->declaration->vintfStability) {
            Fail(type->position, "'" + type->name +
                                         "' is used by a @VintfStability type and must "
                                         "be one itself");
        }
    }
    if (type->builtin == Builtin::Void && type->IsArray()) {
        Fail(type->position, "there are no arrays of void");
        return false;
    }
    if (type->utf8InCpp && type->builtin != Builtin::String) {
        Fail(type->position, "'@utf8InCpp' belongs to a String, not to " + type->name);
    }
    if (type->shape == TypeReference::Shape::List &&
        (IsPrimitive(type->builtin) || type->IsEnum())) {
        Fail(type->position, "a List holds objects: write " + type->name + "[] instead");
    }
    CheckNullable(*type);
    return ResolveSize(document, type);
}

bool Checker::ResolveSize(const Document& document, TypeReference* type) {
    if (type->shape != TypeReference::Shape::FixedArray) {
        return true;
    }
    const auto size = mConstants.Evaluate(*type->sizeExpression, document);
    if (!size) {
        return false;
    }
    if (size->value < 1 || size->value > kMaxFixedArraySize) {
        Fail(type->sizeExpression->position, "an array of " + std::to_string(size->value) +
                                                     " elements: the size is 1 to " +
                                                     std::to_string(kMaxFixedArraySize));
        return false;
    }
    type->size = size->value;
    return true;
}

void Checker::CheckNullable(const TypeReference& type) {
    const bool isValue =
            IsPrimitive(type.builtin) || type.IsEnum() || type.builtin == Builtin::Void;
    if (type.nullable && isValue && !type.IsArray()) {
        Fail(type.position, "'@nullable' cannot be applied to " + type.name + ": it is never null");
    }
}

void Checker::CheckFields(Declaration* declaration) {
    static const std::set<std::string> reserved = {"descriptor",    "fixed_size", "readFromParcel",
                                                   "writeToParcel", "toString",   "Tag",
                                                   "make",          "get",        "set",
                                                   "getTag",        "_value"};
    std::set<std::string> names;
    for (Field& field : declaration->fields) {
        CheckName(field.name, field.position, "field", &names);
        if (reserved.count(field.name) != 0) {
            Fail(field.position, "'" + field.name +
                                         "' is a member of every generated class and "
                                         "cannot name a field");
        } else if (field.name == declaration->name) {
            Fail(field.position,
                 "'" + field.name + "' is the name of the class and cannot name a field");
        }
        if (!Resolve(*declaration->document, &field.type)) {
            continue;
        }
        if (field.type.builtin == Builtin::Void) {
            Fail(field.type.position, "a field cannot be void");
        } else if (field.defaultValue != nullptr) {
            CheckDefault(*declaration->document, &field);
        }
    }
    if (declaration->kind == Declaration::Kind::Union && declaration->fields.empty()) {
        Fail(declaration->position, "union " + declaration->name + " needs at least one member");
    }
}

void Checker::CheckSelfContainment(const Declaration& declaration) {
    if (declaration.kind != Declaration::Kind::Parcelable &&
        declaration.kind != Declaration::Kind::Union) {
        return;
    }
    std::set<const Declaration*> seen;
    std::vector<const Declaration*> open = {&declaration};
    while (!open.empty()) {
        const Declaration* current = open.back();
        open.pop_back();
        for (const Field& field : current->fields) {
            const Declaration* inner = field.type.declaration;
            if (inner == &declaration) {
                const bool direct = current == &declaration;
                Fail(direct ? field.position : declaration.position,
                     std::string(KindName(declaration.kind)) + " " + declaration.name +
                             " contains itself" +
                             (direct ? "" : " through " + current->name + "." + field.name));
                return;
            }
            if (inner != nullptr && inner->kind != Declaration::Kind::Interface &&
                seen.insert(inner).second) {
                open.push_back(inner);
            }
        }
    }
}

}  // namespace aidlc
