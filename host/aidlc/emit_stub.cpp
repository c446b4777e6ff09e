// Emits the server side: BnName, the delegator, and the functions that take calls from parcels.
#include "cpp_types.h"
#include "emit.h"
#include "text.h"

namespace aidlc {
namespace {

const char* const kClasses = R"(class Bn$base$ : public ::ndk::BnCInterface<I$base$> {
  public:
    Bn$base$();
    virtual ~Bn$base$();
$version$

  protected:
    ::ndk::SpAIBinder createBinder() override;
};

/** Hands every call on to another implementation. */
class I$base$Delegator : public Bn$base$ {
  public:
    explicit I$base$Delegator(const std::shared_ptr<I$base$>& impl) : _impl(impl) {
$check$
    }

$delegates$

  private:
    std::shared_ptr<I$base$> _impl;
};
)";

const char* const kVersionDeclarations =
        R"(    ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) final;
    ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) final;
)";

const char* const kVersionCheck = R"(        int32_t _aidl_version = 0;
        if (!_impl->getInterfaceVersion(&_aidl_version).isOk() ||
            _aidl_version != I$base$::version) {
            __assert2(__FILE__, __LINE__, __PRETTY_FUNCTION__,
                      "the implementation has another version than its delegator");
        }
)";

const char* const kSource = R"($handlers$
static binder_status_t _aidl_I$base$_onTransact(AIBinder* binder, transaction_code_t code,
                                                [[maybe_unused]] const AParcel* in,
                                                [[maybe_unused]] AParcel* out) {
    const std::shared_ptr<I$base$> impl =
            std::static_pointer_cast<I$base$>(::ndk::ICInterface::asInterface(binder));
    if (impl == nullptr) {
        return STATUS_INVALID_OPERATION;
    }
    switch (code) {
$cases$
        default:
            return STATUS_UNKNOWN_TRANSACTION;
    }
}

Bn$base$::Bn$base$() {}
Bn$base$::~Bn$base$() {}

::ndk::SpAIBinder Bn$base$::createBinder() {
    AIBinder* const binder = AIBinder_new(_aidl_I$base$_class(), static_cast<void*>(this));
#ifdef BINDER_STABILITY_SUPPORT
    $mark$(binder);
#endif
    return ::ndk::SpAIBinder(binder);
}

$version$
)";

const char* const kVersionMethods =
        R"(::ndk::ScopedAStatus Bn$base$::getInterfaceVersion(int32_t* _aidl_return) {
    *_aidl_return = I$base$::version;
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus Bn$base$::getInterfaceHash(std::string* _aidl_return) {
    *_aidl_return = I$base$::hash;
    return ::ndk::ScopedAStatus::ok();
}
)";

const char* const kHandler = R"(
static binder_status_t _aidl_I$base$_$method$(I$base$& _aidl_impl,
                                              [[maybe_unused]] const AParcel* _aidl_in,
                                              [[maybe_unused]] AParcel* _aidl_out) {
    [[maybe_unused]] binder_status_t _aidl_status = STATUS_OK;
$arguments$
    const ::ndk::ScopedAStatus _aidl_result = _aidl_impl.$method$($values$);
$reply$
    return STATUS_OK;
}
)";

const char* const kStep = R"(    _aidl_status = $call$;
    if (_aidl_status != STATUS_OK) {
        return _aidl_status;
    }
)";

// A failed call's reply is its status alone.
const char* const kStatus =
        R"(    _aidl_status = AParcel_writeStatusHeader(_aidl_out, _aidl_result.get());
    if (_aidl_status != STATUS_OK || !_aidl_result.isOk()) {
        return _aidl_status;
    }
)";

std::string Step(const std::string& call) {
    return Expand(kStep, {{"call", call}});
}

std::string ReadArgument(const Argument& argument) {
    const std::string name = ParameterName(argument);
    std::string text = "    " + CppType(argument.type) + " " + name + "{};\n";
    if (argument.GoesIn()) {
        text += Step(ReadFunction(argument.type) + "(_aidl_in, &" + name + ")");
    } else if (argument.type.shape == TypeReference::Shape::Array) {
        text += Step("::ndk::AParcel_resizeVector(_aidl_in, &" + name + ")");
    }
    return text;
}

std::string Handler(const Declaration& declaration, const Method& method) {
    std::string arguments;
    std::string reply = method.oneway ? "    (void)_aidl_result;\n" : kStatus;
    std::vector<std::string> values;
    const bool hasReturn = method.returnType.builtin != Builtin::Void;
    if (hasReturn) {
        reply += Step(WriteFunction(method.returnType) + "(_aidl_out, _aidl_return)");
    }
    for (const Argument& argument : method.arguments) {
        arguments += ReadArgument(argument);
        values.push_back((argument.ComesOut() ? "&" : "") + ParameterName(argument));
        if (argument.ComesOut()) {
            reply += Step(WriteFunction(argument.type) + "(_aidl_out, " + ParameterName(argument) +
                          ")");
        }
    }
    if (hasReturn) {
        arguments += "    " + CppType(method.returnType) + " _aidl_return{};\n";
        values.push_back("&_aidl_return");
    }
    const std::string text = Expand(kHandler, {{"base", BaseName(declaration)},
                                               {"method", method.name},
                                               {"arguments", arguments},
                                               {"values", Join(values, ", ")},
                                               {"reply", reply}});
    return method.deprecated ? WithoutDeprecationWarnings(text) : text;
}

const char* const kVersionHandlers = R"(
static binder_status_t _aidl_I$base$_getInterfaceVersion(AParcel* _aidl_out) {
    const binder_status_t _aidl_status =
            AParcel_writeStatusHeader(_aidl_out, ::ndk::ScopedAStatus::ok().get());
    return _aidl_status != STATUS_OK ? _aidl_status
                                     : ::ndk::AParcel_writeData(_aidl_out, I$base$::version);
}

static binder_status_t _aidl_I$base$_getInterfaceHash(AParcel* _aidl_out) {
    const binder_status_t _aidl_status =
            AParcel_writeStatusHeader(_aidl_out, ::ndk::ScopedAStatus::ok().get());
    return _aidl_status != STATUS_OK ? _aidl_status
                                     : ::ndk::AParcel_writeData(_aidl_out, I$base$::hash);
}
)";

const char* const kVersionCases = R"(        case FIRST_CALL_TRANSACTION + 16777214:
            return _aidl_I$base$_getInterfaceVersion(out);
        case FIRST_CALL_TRANSACTION + 16777213:
            return _aidl_I$base$_getInterfaceHash(out);
)";

}  // namespace

std::string StubBody(const Declaration& declaration, const EmitOptions& options) {
    std::string delegates;
    for (const Method& method : declaration.methods) {
        const std::string body = " override {\n        return _impl->" + method.name + "(" +
                                 CallArguments(method) + ");\n    }";
        std::string text = MethodDeclaration(method, body);
        text.erase(text.rfind(';'), 1);
        delegates += method.deprecated ? WithoutDeprecationWarnings(text) : text;
    }
    const Substitutions base = {{"base", BaseName(declaration)}};
    const bool versioned = options.version > 0;
    return Expand(kClasses, {{"base", BaseName(declaration)},
                             {"version", versioned ? kVersionDeclarations : ""},
                             {"check", versioned ? Expand(kVersionCheck, base) : ""},
                             {"delegates", delegates}});
}

std::string StubSource(const Declaration& declaration, const EmitOptions& options) {
    const Substitutions base = {{"base", BaseName(declaration)}};
    const bool versioned = options.version > 0;
    std::string handlers;
    std::string cases;
    for (const Method& method : declaration.methods) {
        handlers += Handler(declaration, method);
        cases += "        case " + declaration.name + "::TRANSACTION_" + method.name +
                 ":\n            return _aidl_" + declaration.name + "_" + method.name +
                 "(*impl, in, out);\n";
    }
    return Expand(kSource,
                  {{"base", BaseName(declaration)},
                   {"handlers", handlers + (versioned ? Expand(kVersionHandlers, base) : "")},
                   {"cases", cases + (versioned ? Expand(kVersionCases, base) : "")},
                   {"mark", declaration.vintfStability ? "AIBinder_markVintfStability"
                                                       : "AIBinder_markCompilationUnitStability"},
                   {"version", versioned ? Expand(kVersionMethods, base) : ""}});
}

}  // namespace aidlc
