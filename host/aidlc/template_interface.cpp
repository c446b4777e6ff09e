// What interfaces are made of: IName with INameDefault, which knows no method; the server side,
// BnName with the delegator; the client side, BpName.
#include "templates.h"

namespace aidlc {

const char kInterfaceHeader[] = R"(class I$base$Delegator;

class I$base$ : public ::ndk::ICInterface {
  public:
    typedef I$base$Delegator DefaultDelegator;
    static const char* descriptor;
    I$base$();
    virtual ~I$base$();

    static inline const int32_t version = $version$;
    static inline const std::string hash = $hash$;
%each methods
    static constexpr uint32_t TRANSACTION_$method$ = FIRST_CALL_TRANSACTION + $index$;
%end

    static std::shared_ptr<I$base$> fromBinder(const ::ndk::SpAIBinder& binder);
    static binder_status_t writeToParcel(AParcel* parcel, const std::shared_ptr<I$base$>& instance);
    static binder_status_t readFromParcel(const AParcel* parcel,
                                          std::shared_ptr<I$base$>* instance);
    static bool setDefaultImpl(const std::shared_ptr<I$base$>& impl);
    static const std::shared_ptr<I$base$>& getDefaultImpl();
%each calls

    virtual $mark$::ndk::ScopedAStatus $method$($parameters$) = 0;
%end
};

class I$base$Default : public I$base$ {
  public:
%each calls
    $mark$::ndk::ScopedAStatus $method$($parameters$) override;
%end
    ::ndk::SpAIBinder asBinder() override;
    bool isRemote() override;
};
)";

const char kInterfaceSource[] = R"(const char* I$base$::descriptor = "$fullName$";

I$base$::I$base$() {}
I$base$::~I$base$() {}

static binder_status_t _aidl_I$base$_onTransact(AIBinder* binder, transaction_code_t code,
                                                const AParcel* in, AParcel* out);

static const AIBinder_Class* _aidl_I$base$_class() {
    static const AIBinder_Class* const clazz = [] {
        AIBinder_Class* const defined =
                ::ndk::ICInterface::defineClass(I$base$::descriptor, _aidl_I$base$_onTransact);
        static constexpr const char* names[] = {$methodNames$nullptr};
        AIBinder_Class_setTransactionNames(defined, names, $methodCount$);
        return defined;
    }();
    return clazz;
}

std::shared_ptr<I$base$> I$base$::fromBinder(const ::ndk::SpAIBinder& binder) {
    if (binder.get() == nullptr) return nullptr;
    if (AIBinder_associateClass(binder.get(), _aidl_I$base$_class())) {
        const std::shared_ptr<::ndk::ICInterface> local =
                ::ndk::ICInterface::asInterface(binder.get());
        if (local != nullptr) return std::static_pointer_cast<I$base$>(local);
    } else {
        // Another library's class for the same interface may be attached: its object is used as if
        // it were remote.
        const AIBinder_Class* const other = AIBinder_getClass(binder.get());
        if (other == nullptr) return nullptr;
        if (std::strcmp(AIBinder_Class_getDescriptor(other), descriptor) != 0) return nullptr;
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
    if (status == STATUS_OK) *instance = I$base$::fromBinder(binder);
    return status;
}

// Never destroyed: calls may still be made while the process exits.
static std::shared_ptr<I$base$>& _aidl_I$base$_default() {
    static std::shared_ptr<I$base$>& impl = *new std::shared_ptr<I$base$>();
    return impl;
}

bool I$base$::setDefaultImpl(const std::shared_ptr<I$base$>& impl) {
    std::shared_ptr<I$base$>& slot = _aidl_I$base$_default();
    if (impl == nullptr || slot != nullptr) return false;
    slot = impl;
    return true;
}

const std::shared_ptr<I$base$>& I$base$::getDefaultImpl() { return _aidl_I$base$_default(); }

%each calls
::ndk::ScopedAStatus I$base$Default::$method$($unnamedParameters$) {
    return ::ndk::ScopedAStatus::fromStatus(STATUS_UNKNOWN_TRANSACTION);
}
%end
::ndk::SpAIBinder I$base$Default::asBinder() { return ::ndk::SpAIBinder(); }
bool I$base$Default::isRemote() { return false; }

)";

const char kStubHeader[] = R"(class Bn$base$ : public ::ndk::BnCInterface<I$base$> {
  public:
    Bn$base$();
    virtual ~Bn$base$();
    ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) final {
        *_aidl_return = I$base$::version;
        return ::ndk::ScopedAStatus::ok();
    }
    ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) final {
        *_aidl_return = I$base$::hash;
        return ::ndk::ScopedAStatus::ok();
    }

  protected:
    ::ndk::SpAIBinder createBinder() override;
};

// Hands every call on to another implementation.
class I$base$Delegator : public Bn$base$ {
  public:
    explicit I$base$Delegator(const std::shared_ptr<I$base$>& impl) : _impl(impl) {}

%each methods
$quiet$
    $mark$::ndk::ScopedAStatus $method$($parameters$) override {
        return _impl->$method$($arguments$);
    }
$loud$
%end

  private:
    std::shared_ptr<I$base$> _impl;
};
)";

// The reply to a failed call is its status alone.
const char kStubSource[] = R"(%each calls
$quiet$

static binder_status_t _aidl_I$base$_$method$(I$base$& _aidl_impl,
                                              [[maybe_unused]] const AParcel* _aidl_in,
                                              [[maybe_unused]] AParcel* _aidl_out) {
    [[maybe_unused]] binder_status_t _aidl_status = STATUS_OK;
%each variables
    $type$ $variable$$start$;
%each inRequest
    _aidl_status = ::ndk::$read$;
    if (_aidl_status != STATUS_OK) return _aidl_status;
%end
%end
    const ::ndk::ScopedAStatus _aidl_result = _aidl_impl.$method$($variableArguments$);
%each isOneway
    (void)_aidl_result;
%end
%each isAnswered
    _aidl_status = AParcel_writeStatusHeader(_aidl_out, _aidl_result.get());
    if (_aidl_status != STATUS_OK || !_aidl_result.isOk()) return _aidl_status;
%end
%each results
    _aidl_status = ::ndk::AParcel_writeData(_aidl_out, $result$);
    if (_aidl_status != STATUS_OK) return _aidl_status;
%end
    return STATUS_OK;
}
$loud$
%end

static binder_status_t _aidl_I$base$_onTransact(AIBinder* binder, transaction_code_t code,
                                                [[maybe_unused]] const AParcel* in,
                                                [[maybe_unused]] AParcel* out) {
    const std::shared_ptr<I$base$> impl =
            std::static_pointer_cast<I$base$>(::ndk::ICInterface::asInterface(binder));
    if (impl == nullptr) return STATUS_INVALID_OPERATION;
    switch (code) {
%each calls
        case $code$:
            return _aidl_I$base$_$method$(*impl, in, out);
%end
        default:
            return STATUS_UNKNOWN_TRANSACTION;
    }
}

Bn$base$::Bn$base$() {}
Bn$base$::~Bn$base$() {}

::ndk::SpAIBinder Bn$base$::createBinder() {
    AIBinder* const binder = AIBinder_new(_aidl_I$base$_class(), static_cast<void*>(this));
#ifdef BINDER_STABILITY_SUPPORT
    AIBinder_markVintfStability(binder);
#endif
    return ::ndk::SpAIBinder(binder);
}

)";

const char kProxyHeader[] = R"(class Bp$base$ : public ::ndk::BpCInterface<I$base$> {
  public:
    explicit Bp$base$(const ::ndk::SpAIBinder& binder);
    virtual ~Bp$base$();

%each calls
    $mark$::ndk::ScopedAStatus $method$($parameters$) override;
%end

  private:
    std::atomic<int32_t> _aidl_cached_version{-1};
    std::string _aidl_cached_hash;
    std::mutex _aidl_cached_hash_mutex;
};
)";

// The answers about version and hash do not change, so one question is enough.
const char kProxySource[] =
        R"(Bp$base$::Bp$base$(const ::ndk::SpAIBinder& binder) : BpCInterface(binder) {}
Bp$base$::~Bp$base$() {}

%each calls
$quiet$

::ndk::ScopedAStatus Bp$base$::$method$($parameters$) {
%each asksVersion
    const int32_t _aidl_known = _aidl_cached_version;
    if (_aidl_known != -1) {
        *_aidl_return = _aidl_known;
        return ::ndk::ScopedAStatus::ok();
    }
%end
%each asksHash
    const std::lock_guard<std::mutex> _aidl_lock(_aidl_cached_hash_mutex);
    if (!_aidl_cached_hash.empty()) {
        *_aidl_return = _aidl_cached_hash;
        return ::ndk::ScopedAStatus::ok();
    }
%end
    const ::ndk::SpAIBinder _aidl_binder = asBinder();
    ::ndk::ScopedAParcel _aidl_in;
    ::ndk::ScopedAParcel _aidl_out;
    binder_status_t _aidl_status =
            AIBinder_prepareTransaction(_aidl_binder.get(), _aidl_in.getR());
    if (_aidl_status != STATUS_OK) return ::ndk::ScopedAStatus::fromStatus(_aidl_status);
%each variables
%each inRequest
    _aidl_status = ::ndk::$write$;
    if (_aidl_status != STATUS_OK) return ::ndk::ScopedAStatus::fromStatus(_aidl_status);
%end
%end
    binder_flags_t _aidl_flags = $flags$;
#ifdef BINDER_STABILITY_SUPPORT
    _aidl_flags |= FLAG_PRIVATE_LOCAL;
#endif
    _aidl_status = AIBinder_transact(_aidl_binder.get(), $code$, _aidl_in.getR(),
                                     _aidl_out.getR(), _aidl_flags);
    if (_aidl_status == STATUS_UNKNOWN_TRANSACTION && I$base$::getDefaultImpl() != nullptr) {
        return I$base$::getDefaultImpl()->$method$($arguments$);
    }
    if (_aidl_status != STATUS_OK) return ::ndk::ScopedAStatus::fromStatus(_aidl_status);
%each isAnswered
    ::ndk::ScopedAStatus _aidl_result;
    _aidl_status = AParcel_readStatusHeader(_aidl_out.get(), _aidl_result.getR());
    if (_aidl_status != STATUS_OK) return ::ndk::ScopedAStatus::fromStatus(_aidl_status);
    if (!_aidl_result.isOk()) return _aidl_result;
%end
%each results
    _aidl_status = ::ndk::AParcel_readData(_aidl_out.get(), $result$);
    if (_aidl_status != STATUS_OK) return ::ndk::ScopedAStatus::fromStatus(_aidl_status);
%end
%each asksVersion
    _aidl_cached_version = *_aidl_return;
%end
%each asksHash
    _aidl_cached_hash = *_aidl_return;
%end
    return $answer$;
}
$loud$
%end
)";

}  // namespace aidlc
