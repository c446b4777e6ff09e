// Parses what stands between the braces of a declaration.
#include "parser.h"

namespace aidlc {

bool Parser::ParseEnum(const Annotations& annotations) {
    Declaration& declaration = mDocument->declaration;
    if (annotations.backing == "int") {
        declaration.backing = Builtin::Int;
    } else if (annotations.backing == "long") {
        declaration.backing = Builtin::Long;
    }
    while (!TakeIf("}")) {
        Enumerator enumerator;
        if (!ParseName("an enumerator or '}'", &enumerator.name, &enumerator.position)) {
            return false;
        }
        if (TakeIf("=") && !ParseExpression(&enumerator.valueExpression)) {
            return false;
        }
        declaration.enumerators.push_back(std::move(enumerator));
        if (!TakeIf(",") && !Next().Is("}")) {
            return Fail("expected ',' or '}' after an enumerator, found " + Describe(Next()));
        }
    }
    return true;
}

bool Parser::ParseFields() {
    while (!TakeIf("}")) {
        if (!ParseField()) {
            return false;
        }
    }
    return true;
}

bool Parser::ParseField() {
    Field field;
    Annotations annotations;
    if (!ParseAnnotations(&annotations) || !ParseType(annotations, &field.type) ||
        !ParseName("the name of a field", &field.name, &field.position)) {
        return false;
    }
    if (TakeIf("=") && !ParseExpression(&field.defaultValue)) {
        return false;
    }
    if (!Expect(";", "after a field")) {
        return false;
    }
    mDocument->declaration.fields.push_back(std::move(field));
    return true;
}

bool Parser::ParseInterface(bool oneway) {
    while (!TakeIf("}")) {
        if (!ParseMethod(oneway)) {
            return false;
        }
    }
    return true;
}

bool Parser::ParseMethod(bool interfaceOneway) {
    Method method;
    method.deprecationNote = DeprecationNote(Next().comment, &method.deprecated);
    Annotations annotations;
    if (!ParseAnnotations(&annotations)) {
        return false;
    }
    method.oneway = TakeIf("oneway") || interfaceOneway;
    if (!ParseType(annotations, &method.returnType) ||
        !ParseName("the name of a method", &method.name, &method.position) ||
        !Expect("(", "after the name of a method")) {
        return false;
    }
    while (!TakeIf(")")) {
        if (!ParseArgument(&method)) {
            return false;
        }
    }
    if (Next().Is("=")) {
        return Fail("transaction numbers cannot be chosen: they follow the order of the methods");
    }
    if (!Expect(";", "after a method")) {
        return false;
    }
    mDocument->declaration.methods.push_back(std::move(method));
    return true;
}

bool Parser::ParseArgument(Method* method) {
    Argument argument;
    if (TakeIf("in")) {
        argument.direction = Argument::Direction::In;
    } else if (TakeIf("out")) {
        argument.direction = Argument::Direction::Out;
    } else if (TakeIf("inout")) {
        argument.direction = Argument::Direction::InOut;
    }
    Annotations annotations;
    if (!ParseAnnotations(&annotations)) {
        return false;
    }
    if (Next().Is("in") || Next().Is("out") || Next().Is("inout")) {
        return Fail("the direction '" + Next().text + "' stands before the annotations of a type");
    }
    if (!ParseType(annotations, &argument.type) ||
        !ParseName("the name of an argument", &argument.name, &argument.position)) {
        return false;
    }
    method->arguments.push_back(std::move(argument));
    if (Next().Is(")")) {
        return true;
    }
    if (!Expect(",", "or ')' after an argument")) {
        return false;
    }
    return !Next().Is(")") || Fail("expected an argument after ','");
}

std::string DeprecationNote(const std::string& comment, bool* found) {
    const std::string mark = "@deprecated";
    const size_t start = comment.find(mark);
    *found = start != std::string::npos;
    std::string note;
    if (!*found) {
        return note;
    }
    bool gap = false;
    for (size_t i = start + mark.size(); i < comment.size() && comment[i] != '@'; i++) {
        const char c = comment[i];
        if (c == '*' || static_cast<unsigned char>(c) <= ' ' ||
            (c == '/' && comment[i - 1] == '*')) {
            gap = true;
            continue;
        }
        note += gap && !note.empty() ? " " : "";
        note += c;
        gap = false;
    }
    return note;
}

}  // namespace aidlc
