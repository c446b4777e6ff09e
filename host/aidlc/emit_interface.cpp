// Emits the interface class IName and INameDefault.
#include "cpp_types.h"
#include "emit.h"
#include "text.h"

namespace aidlc {
namespace {

const char* const kClasses = R"(class I$base$Delegator;

class I$base$ : public ::ndk::ICInterface {
  public:
    typedef I$base$Delegator DefaultDelegator;
    static const char* descriptor;
    I$base$();
    virtual ~I$base$();

$version$
$codes$

    static std::shared_ptr<I$base$> fromBinder(const ::ndk::SpAIBinder& binder);
    static binder_status_t writeToParcel(AParcel* parcel, const std::shared_ptr<I$base$>& instance);
    static binder_status_t readFromParcel(const AParcel* parcel,
                                          std::shared_ptr<I$base$>* instance);
    static bool setDefaultImpl(const std::shared_ptr<I$base$>& impl);
    static const std::shared_ptr<I$base$>& getDefaultImpl();
$methods$
};

class I$base$Default : public I$base$ {
  public:
$overrides$
    ::ndk::SpAIBinder asBinder() override;
    bool isRemote() override;
};
)";

const char* const kVersion = R"(    static inline const int32_t version = $version$;
    static inline const std::string hash = "$hash$";
)";

const char* const kVersionMethods =
        R"(    virtual ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) = 0;
)";

const char* const kVersionOverrides =
        R"(    ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) override;
)";

const char* const kSource = R"(const char* I$base$::descriptor = "$canonical$";

I$base$::I$base$() {}
I$base$::~I$base$() {}

static binder_status_t _aidl_I$base$_onTransact(AIBinder* binder, transaction_code_t code,
                                                const AParcel* in, AParcel* out);

static const AIBinder_Class* _aidl_I$base$_class() {
    static const AIBinder_Class* const clazz = [] {
        AIBinder_Class* const defined =
                ::ndk::ICInterface::defineClass(I$base$::descriptor, _aidl_I$base$_onTransact);
$names$        return defined;
    }();
    return clazz;
}

std::shared_ptr<I$base$> I$base$::fromBinder(const ::ndk::SpAIBinder& binder) {
    if (binder.get() == nullptr) {
        return nullptr;
    }
    if (AIBinder_associateClass(binder.get(), _aidl_I$base$_class())) {
        const std::shared_ptr<::ndk::ICInterface> local =
                ::ndk::ICInterface::asInterface(binder.get());
        if (local != nullptr) {
            return std::static_pointer_cast<I$base$>(local);
        }
        return ::ndk::SharedRefBase::make<Bp$base$>(binder);
    }
    // Another library's class for the same interface may be attached: its object is used as if it
    // were remote.
    const AIBinder_Class* const other = AIBinder_getClass(binder.get());
    if (other == nullptr || std::strcmp(AIBinder_Class_getDescriptor(other), descriptor) != 0) {
        return nullptr;
    }
    return ::ndk::SharedRefBase::make<Bp$base$>(binder);
}

binder_status_t I$base$::writeToParcel(AParcel* parcel,
                                       const std::shared_ptr<I$base$>& instance) {
    const ::ndk::SpAIBinder binder =
            instance == nullptr ? ::ndk::SpAIBinder() : instance->asBinder();
    return AParcel_writeStrongBinder(parcel, binder.get());
}

binder_status_t I$base$::readFromParcel(const AParcel* parcel,
                                        std::shared_ptr<I$base$>* instance) {
    ::ndk::SpAIBinder binder;
    const binder_status_t status = AParcel_readStrongBinder(parcel, binder.getR());
    if (status == STATUS_OK) {
        *instance = I$base$::fromBinder(binder);
    }
    return status;
}

// Never destroyed: calls may still be made while the process exits.
static std::shared_ptr<I$base$>& _aidl_I$base$_default() {
    static std::shared_ptr<I$base$>& impl = *new std::shared_ptr<I$base$>();
    return impl;
}

bool I$base$::setDefaultImpl(const std::shared_ptr<I$base$>& impl) {
    std::shared_ptr<I$base$>& slot = _aidl_I$base$_default();
    if (impl == nullptr || slot != nullptr) {
        return false;
    }
    slot = impl;
    return true;
}

const std::shared_ptr<I$base$>& I$base$::getDefaultImpl() { return _aidl_I$base$_default(); }

$defaults$
::ndk::SpAIBinder I$base$Default::asBinder() { return ::ndk::SpAIBinder(); }
bool I$base$Default::isRemote() { return false; }
)";

// What the trace of transactions calls the methods.
const char* const kNames = R"(        static constexpr const char* names[] = {$list$};
        AIBinder_Class_setTransactionNames(defined, names, sizeof(names) / sizeof(names[0]));
)";

const char* const kUnknown = R"( {
    return ::ndk::ScopedAStatus::fromStatus(STATUS_UNKNOWN_TRANSACTION);
}
)";

/** A method's signature for a body that does not look at the arguments. */
std::string UnusedSignature(const Method& method, const std::string& name) {
    std::string signature = MethodSignature(method, name);
    for (const Argument& argument : method.arguments) {
        const std::string parameter = " " + ParameterName(argument);
        for (const char* end : {",", ")"}) {
            const size_t at = signature.find(parameter + end);
            if (at != std::string::npos) {
                signature.replace(at, parameter.size(), " /*" + ParameterName(argument) + "*/");
                break;
            }
        }
    }
    const std::string last = " _aidl_return)";
    const size_t at = signature.rfind(last);
    return at == std::string::npos ? signature
                                   : signature.replace(at, last.size(), " /*_aidl_return*/)");
}

}  // namespace

std::string InterfaceBody(const Declaration& declaration, const EmitOptions& options) {
    std::string codes;
    std::string methods;
    std::string overrides;
    size_t index = 0;
    for (const Method& method : declaration.methods) {
        codes += "    static constexpr uint32_t TRANSACTION_" + method.name +
                 " = FIRST_CALL_TRANSACTION + " + std::to_string(index++) + ";\n";
        methods += "\n" + MethodDeclaration(method, " = 0").replace(0, 4, "    virtual ");
        overrides += MethodDeclaration(method, " override");
    }
    const bool versioned = options.version > 0;
    return Expand(
            kClasses,
            {{"base", BaseName(declaration)},
             {"version", versioned ? Expand(kVersion, {{"version", std::to_string(options.version)},
                                                       {"hash", options.hash}})
                                   : ""},
             {"codes", codes},
             {"methods", methods + (versioned ? kVersionMethods : "")},
             {"overrides", overrides + (versioned ? kVersionOverrides : "")}});
}

std::string InterfaceSource(const Declaration& declaration, const EmitOptions& options) {
    const std::string defaultClass = declaration.name + "Default::";
    std::string defaults;
    std::string names;
    for (const Method& method : declaration.methods) {
        names += (names.empty() ? "\"" : ", \"") + method.name + "\"";
        defaults += UnusedSignature(method, defaultClass + method.name) + kUnknown;
    }
    if (options.version > 0) {
        defaults += "::ndk::ScopedAStatus " + defaultClass +
                    "getInterfaceVersion(int32_t* _aidl_return) {\n    *_aidl_return = 0;\n"
                    "    return ::ndk::ScopedAStatus::ok();\n}\n";
        defaults += "::ndk::ScopedAStatus " + defaultClass +
                    "getInterfaceHash(std::string* _aidl_return) {\n    *_aidl_return = \"\";\n"
                    "    return ::ndk::ScopedAStatus::ok();\n}\n";
    }
    return Expand(kSource, {{"base", BaseName(declaration)},
                            {"canonical", declaration.CanonicalName()},
                            {"names", names.empty() ? "" : Expand(kNames, {{"list", names}})},
                            {"defaults", defaults}});
}

}  // namespace aidlc
