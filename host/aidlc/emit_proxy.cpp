// Emits the client side: BpName, whose methods make calls through parcels.
#include "cpp_types.h"
#include "emit.h"
#include "text.h"

namespace aidlc {
namespace {

const char* const kClass = R"(class Bp$base$ : public ::ndk::BpCInterface<I$base$> {
  public:
    explicit Bp$base$(const ::ndk::SpAIBinder& binder);
    virtual ~Bp$base$();

$methods$
$version$
};
)";

const char* const kVersionDeclarations =
        R"(    ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) override;

  private:
    std::atomic<int32_t> _aidl_cached_version{-1};
    std::string _aidl_cached_hash;
    std::mutex _aidl_cached_hash_mutex;
)";

const char* const kSource =
        R"(Bp$base$::Bp$base$(const ::ndk::SpAIBinder& binder) : BpCInterface(binder) {}
Bp$base$::~Bp$base$() {}

$methods$
)";

const char* const kMethod = R"(
$signature$ {
$prologue$
    const ::ndk::SpAIBinder _aidl_binder = asBinder();
    ::ndk::ScopedAParcel _aidl_in;
    ::ndk::ScopedAParcel _aidl_out;
    binder_status_t _aidl_status =
            AIBinder_prepareTransaction(_aidl_binder.get(), _aidl_in.getR());
    if (_aidl_status != STATUS_OK) {
        return ::ndk::ScopedAStatus::fromStatus(_aidl_status);
    }
$writes$
    binder_flags_t _aidl_flags = $flags$;
#ifdef BINDER_STABILITY_SUPPORT
    _aidl_flags |= FLAG_PRIVATE_LOCAL;
#endif
    _aidl_status = AIBinder_transact(_aidl_binder.get(), $code$, _aidl_in.getR(),
                                     _aidl_out.getR(), _aidl_flags);
    if (_aidl_status == STATUS_UNKNOWN_TRANSACTION && I$base$::getDefaultImpl() != nullptr) {
        return I$base$::getDefaultImpl()->$method$($arguments$);
    }
    if (_aidl_status != STATUS_OK) {
        return ::ndk::ScopedAStatus::fromStatus(_aidl_status);
    }
$reads$
$epilogue$
    return $result$;
}
)";

const char* const kStep = R"(    _aidl_status = $call$;
    if (_aidl_status != STATUS_OK) {
        return ::ndk::ScopedAStatus::fromStatus(_aidl_status);
    }
)";

const char* const kReadStatus = R"(    ::ndk::ScopedAStatus _aidl_result;
    _aidl_status = AParcel_readStatusHeader(_aidl_out.get(), _aidl_result.getR());
    if (_aidl_status != STATUS_OK) {
        return ::ndk::ScopedAStatus::fromStatus(_aidl_status);
    }
    if (!_aidl_result.isOk()) {
        return _aidl_result;
    }
)";

// The remote side's answer does not change, so one query is enough.
const char* const kCachedVersion = R"(    const int32_t _aidl_known = _aidl_cached_version;
    if (_aidl_known != -1) {
        *_aidl_return = _aidl_known;
        return ::ndk::ScopedAStatus::ok();
    }
)";

const char* const kCachedHash =
        R"(    const std::lock_guard<std::mutex> _aidl_lock(_aidl_cached_hash_mutex);
    if (!_aidl_cached_hash.empty()) {
        *_aidl_return = _aidl_cached_hash;
        return ::ndk::ScopedAStatus::ok();
    }
)";

struct Frame {
    std::string code;      // transaction code
    std::string prologue;  // before the call
    std::string epilogue;  // after a good answer
};

Method VersionMethod(const std::string& name, Builtin type) {
    Method method;
    method.name = name;
    method.returnType.builtin = type;
    return method;
}

std::string Step(const std::string& call) {
    return Expand(kStep, {{"call", call}});
}

std::string Writes(const Method& method) {
    std::string text;
    for (const Argument& argument : method.arguments) {
        const std::string name = ParameterName(argument);
        if (argument.GoesIn()) {
            text += Step(WriteFunction(argument.type) + "(_aidl_in.get(), " +
                         (argument.ComesOut() ? "*" : "") + name + ")");
        } else if (argument.type.shape == TypeReference::Shape::Array) {
            text += Step("::ndk::AParcel_writeVectorSize(_aidl_in.get(), *" + name + ")");
        }
    }
    return text;
}

std::string Reads(const Method& method) {
    if (method.oneway) {
        return "";
    }
    std::string text = kReadStatus;
    if (method.returnType.builtin != Builtin::Void) {
        text += Step(ReadFunction(method.returnType) + "(_aidl_out.get(), _aidl_return)");
    }
    for (const Argument& argument : method.arguments) {
        if (argument.ComesOut()) {
            text += Step(ReadFunction(argument.type) + "(_aidl_out.get(), " +
                         ParameterName(argument) + ")");
        }
    }
    return text;
}

std::string Body(const Declaration& declaration, const Method& method, const Frame& frame) {
    const std::string base = BaseName(declaration);
    const std::string text = Expand(
            kMethod, {{"base", base},
                      {"signature", MethodSignature(method, "Bp" + base + "::" + method.name)},
                      {"method", method.name},
                      {"code", frame.code},
                      {"prologue", frame.prologue},
                      {"epilogue", frame.epilogue},
                      {"flags", method.oneway ? "FLAG_ONEWAY" : "0"},
                      {"arguments", CallArguments(method)},
                      {"writes", Writes(method)},
                      {"reads", Reads(method)},
                      {"result", method.oneway ? "::ndk::ScopedAStatus::ok()" : "_aidl_result"}});
    return method.deprecated ? WithoutDeprecationWarnings(text) : text;
}

}  // namespace

std::string ProxyBody(const Declaration& declaration, const EmitOptions& options) {
    std::string methods;
    for (const Method& method : declaration.methods) {
        methods += MethodDeclaration(method, " override");
    }
    return Expand(kClass, {{"base", BaseName(declaration)},
                           {"methods", methods},
                           {"version", options.version > 0 ? kVersionDeclarations : ""}});
}

std::string ProxySource(const Declaration& declaration, const EmitOptions& options) {
    std::string methods;
    for (const Method& method : declaration.methods) {
        methods += Body(declaration, method,
                        {declaration.name + "::TRANSACTION_" + method.name, "", ""});
    }
    if (options.version > 0) {
        methods += Body(declaration, VersionMethod("getInterfaceVersion", Builtin::Int),
                        {"FIRST_CALL_TRANSACTION + 16777214", kCachedVersion,
                         "    _aidl_cached_version = *_aidl_return;\n"});
        methods += Body(declaration, VersionMethod("getInterfaceHash", Builtin::String),
                        {"FIRST_CALL_TRANSACTION + 16777213", kCachedHash,
                         "    _aidl_cached_hash = *_aidl_return;\n"});
    }
    return Expand(kSource, {{"base", BaseName(declaration)}, {"methods", methods}});
}

}  // namespace aidlc
