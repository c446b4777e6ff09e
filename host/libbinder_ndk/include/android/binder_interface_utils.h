// Base classes of AIDL interfaces: shared ownership, the local side (BnCInterface) and the proxy
// side (BpCInterface).
//
// Who keeps whom: an AIBinder's user data holds a shared_ptr to the implementation; the
// implementation holds only a weak reference to its AIBinder. So an object that is known to a peer
// stays alive without any shared_ptr on this side.
#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>

#if __has_include(<android/binder_shell.h>)
#include <android/binder_shell.h>
#define HAS_BINDER_SHELL_COMMAND
#endif

#include <cstddef>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace ndk {

// An object that knows its shared_ptr. Made only with SharedRefBase::make<T>(args...).
class SharedRefBase {
  public:
    SharedRefBase() {}
    SharedRefBase(const SharedRefBase&) = delete;
    SharedRefBase& operator=(const SharedRefBase&) = delete;

    virtual ~SharedRefBase() {
        std::call_once(mFirstRef, []() {
            __assert(__FILE__, __LINE__,
                     "SharedRefBase: object ends without ever having been shared");
        });
        if (!mThis.expired()) {
            __assert(__FILE__, __LINE__, "SharedRefBase: object deleted while it is still shared");
        }
    }

    std::shared_ptr<SharedRefBase> ref() {
        std::shared_ptr<SharedRefBase> self = mThis.lock();
        std::call_once(mFirstRef, [&]() {
            self.reset(this);
            mThis = self;
        });
        return self;
    }

    template <typename CHILD>
    std::shared_ptr<CHILD> ref() {
        return std::static_pointer_cast<CHILD>(ref());
    }

    template <class T, class... Args>
    static std::shared_ptr<T> make(Args&&... args) {
        T* object = new T(std::forward<Args>(args)...);
        return object->template ref<T>();
    }

    static void operator delete(void* p) { ::operator delete(p); }

  private:
    static void* operator new(size_t size) { return ::operator new(size); }

    std::once_flag mFirstRef;
    std::weak_ptr<SharedRefBase> mThis;
};

// What every AIDL interface class derives from.
class ICInterface : public SharedRefBase {
  public:
    ICInterface() {}
    virtual ~ICInterface() {}

    virtual SpAIBinder asBinder() = 0;
    virtual bool isRemote() = 0;
    // fd and args are borrowed for the call.
    virtual inline binder_status_t dump(int fd, const char** args, uint32_t numArgs);
#ifdef HAS_BINDER_SHELL_COMMAND
    virtual inline binder_status_t handleShellCommand(int in, int out, int err, const char** argv,
                                                      uint32_t argc);
#endif

    // The implementation behind a local binder; null for a remote or null one.
    static inline std::shared_ptr<ICInterface> asInterface(AIBinder* binder);
    // A class for implementations that are made with AIBinder_new(clazz, ICInterface*).
    static inline AIBinder_Class* defineClass(const char* interfaceDescriptor,
                                              AIBinder_Class_onTransact onTransact);

  private:
    // The user data of a local binder.
    struct UserData {
        std::shared_ptr<ICInterface> interface;
    };
};

// The base of the local side. Must be the first, non-virtual base of an implementation.
template <typename INTERFACE>
class BnCInterface : public INTERFACE {
  public:
    BnCInterface() {}
    virtual ~BnCInterface() {}

    SpAIBinder asBinder() final;
    bool isRemote() final { return false; }

    static std::string makeServiceName(std::string_view instance) {
        return std::string(INTERFACE::descriptor) + "/" + std::string(instance);
    }

  protected:
    // Makes the AIBinder of this implementation.
    virtual SpAIBinder createBinder() = 0;

  private:
    std::mutex mMutex;  // guards mWeakBinder
    ScopedAIBinder_Weak mWeakBinder;
};

// The base of the proxy side.
template <typename INTERFACE>
class BpCInterface : public INTERFACE {
  public:
    explicit BpCInterface(const SpAIBinder& binder) : mBinder(binder) {}
    virtual ~BpCInterface() {}

    SpAIBinder asBinder() final { return mBinder; }
    const SpAIBinder& asBinderReference() { return mBinder; }
    bool isRemote() final { return AIBinder_isRemote(mBinder.get()); }
    // Dumps do not go to other processes here.
    binder_status_t dump(int /*fd*/, const char** /*args*/, uint32_t /*numArgs*/) override {
        return STATUS_INVALID_OPERATION;
    }

  private:
    SpAIBinder mBinder;
};

binder_status_t ICInterface::dump(int /*fd*/, const char** /*args*/, uint32_t /*numArgs*/) {
    return STATUS_OK;
}

#ifdef HAS_BINDER_SHELL_COMMAND
binder_status_t ICInterface::handleShellCommand(int /*in*/, int /*out*/, int /*err*/,
                                                const char** /*argv*/, uint32_t /*argc*/) {
    return STATUS_OK;
}
#endif

std::shared_ptr<ICInterface> ICInterface::asInterface(AIBinder* binder) {
    if (binder == nullptr) return nullptr;
    void* userData = AIBinder_getUserData(binder);
    return userData == nullptr ? nullptr : static_cast<UserData*>(userData)->interface;
}

AIBinder_Class* ICInterface::defineClass(const char* interfaceDescriptor,
                                         AIBinder_Class_onTransact onTransact) {
    auto onCreate = [](void* args) -> void* {
        return new UserData{static_cast<ICInterface*>(args)->ref<ICInterface>()};
    };
    auto onDestroy = [](void* userData) { delete static_cast<UserData*>(userData); };
    return AIBinder_Class_define(interfaceDescriptor, onCreate, onDestroy, onTransact);
}

template <typename INTERFACE>
SpAIBinder BnCInterface<INTERFACE>::asBinder() {
    std::lock_guard<std::mutex> lock(mMutex);
    SpAIBinder binder;
    if (mWeakBinder.get() != nullptr) binder = mWeakBinder.promote();
    if (binder.get() == nullptr) {
        binder = createBinder();
        mWeakBinder.set(AIBinder_Weak_new(binder.get()));
    }
    return binder;
}

}  // namespace ndk

// Would make an object that does not know its shared_ptr: refused when compiled.
namespace std {

template <typename T, typename... Args,
          enable_if_t<is_base_of<::ndk::SharedRefBase, T>::value, bool> = true>
shared_ptr<T> make_shared(Args...) {
    static_assert(!is_base_of<::ndk::SharedRefBase, T>::value, "use ndk::SharedRefBase::make<T>()");
    return nullptr;
}

template <typename T, typename... Args,
          enable_if_t<is_base_of<::ndk::SharedRefBase, T>::value, bool> = true>
unique_ptr<T> make_unique(Args...) {
    static_assert(!is_base_of<::ndk::SharedRefBase, T>::value, "use ndk::SharedRefBase::make<T>()");
    return nullptr;
}

}  // namespace std
