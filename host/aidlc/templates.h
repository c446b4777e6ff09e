// What the generated files are made of; emit.cpp says what the templates can refer to.
#pragma once

namespace aidlc {

// A header is its start, the text of its kind and the end of its namespace; an enum or a union goes
// on with the list of its values. A source likewise.
extern const char kHeaderStart[];
extern const char kSourceStart[];
extern const char kNamespaceEnd[];
extern const char kEnumValues[];
extern const char kNoInterface[];  // a whole header

extern const char kEnumHeader[];
extern const char kParcelableHeader[];
extern const char kParcelableSource[];
extern const char kUnionHeader[];
extern const char kUnionSource[];
extern const char kInterfaceHeader[];
extern const char kInterfaceSource[];
extern const char kStubHeader[];
extern const char kStubSource[];
extern const char kProxyHeader[];
extern const char kProxySource[];

}  // namespace aidlc
