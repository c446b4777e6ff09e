// Owners for the C objects of the binder NDK.
#pragma once

#include <android/binder_ibinder.h>
#include <android/binder_internal_logging.h>
#include <android/binder_parcel.h>
#include <android/binder_status.h>
#include <assert.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <iostream>
#include <string>

namespace ndk {

// A strong reference to an AIBinder, or null.
class SpAIBinder {
  public:
    SpAIBinder() = default;
    // Takes over the reference.
    explicit SpAIBinder(AIBinder* binder) : mBinder(binder) {}
    SpAIBinder(std::nullptr_t) : SpAIBinder() {}  // NOLINT: implicit on the platform as well
    SpAIBinder(const SpAIBinder& other) { *this = other; }
    ~SpAIBinder() { set(nullptr); }

    SpAIBinder& operator=(const SpAIBinder& other) {
        AIBinder_incStrong(other.mBinder);
        set(other.mBinder);
        return *this;
    }

    // Takes over the reference; releases the old one last, because that may run any code.
    void set(AIBinder* binder) {
        AIBinder* old = mBinder;
        mBinder = binder;
        if (old != nullptr) AIBinder_decStrong(old);
    }

    AIBinder* get() const { return mBinder; }
    // For C functions that return an owned reference; an old value is not released.
    AIBinder** getR() { return &mBinder; }

  private:
    AIBinder* mBinder = nullptr;
};

// Objects are ordered by AIBinder_lt.
#define NDK_SPAIBINDER_COMPARE(LEFT, RIGHT, LHS, RHS)    \
    static inline bool operator<(LEFT lhs, RIGHT rhs) {  \
        return AIBinder_lt(LHS, RHS);                    \
    }                                                    \
    static inline bool operator>(LEFT lhs, RIGHT rhs) {  \
        return AIBinder_lt(RHS, LHS);                    \
    }                                                    \
    static inline bool operator<=(LEFT lhs, RIGHT rhs) { \
        return !AIBinder_lt(RHS, LHS);                   \
    }                                                    \
    static inline bool operator>=(LEFT lhs, RIGHT rhs) { \
        return !AIBinder_lt(LHS, RHS);                   \
    }                                                    \
    static inline bool operator==(LEFT lhs, RIGHT rhs) { \
        return LHS == RHS;                               \
    }                                                    \
    static inline bool operator!=(LEFT lhs, RIGHT rhs) { \
        return LHS != RHS;                               \
    }
NDK_SPAIBINDER_COMPARE(const SpAIBinder&, const SpAIBinder&, lhs.get(), rhs.get())
NDK_SPAIBINDER_COMPARE(const AIBinder*, const SpAIBinder&, lhs, rhs.get())
NDK_SPAIBINDER_COMPARE(const SpAIBinder&, const AIBinder*, lhs.get(), rhs)
#undef NDK_SPAIBINDER_COMPARE

namespace impl {

// Owns one value of a C type; DEFAULT stands for "none".
template <typename T, void (*Destroy)(T), T DEFAULT>
class ScopedAResource {
  public:
    explicit ScopedAResource(T t = DEFAULT) : mT(t) {}
    ScopedAResource(ScopedAResource&& other) noexcept : mT(other.release()) {}
    ScopedAResource& operator=(ScopedAResource&& other) noexcept {
        set(other.release());
        return *this;
    }
    ScopedAResource(const ScopedAResource&) = delete;
    ScopedAResource& operator=(const ScopedAResource&) = delete;
    ~ScopedAResource() { Destroy(mT); }

    // Takes ownership of t.
    void set(T t) {
        Destroy(mT);
        mT = t;
    }
    T get() { return mT; }
    const T get() const { return mT; }  // NOLINT: the platform's own signature
    [[nodiscard]] T release() {
        T t = mT;
        mT = DEFAULT;
        return t;
    }
    // For C functions that return an owned value; an old value is not released.
    T* getR() { return &mT; }

  private:
    T mT;
};

}  // namespace impl

class ScopedAParcel : public impl::ScopedAResource<AParcel*, AParcel_delete, nullptr> {
  public:
    using ScopedAResource::ScopedAResource;
};

// The result of a call, one pointer wide.
class ScopedAStatus : public impl::ScopedAResource<AStatus*, AStatus_delete, nullptr> {
  public:
    using ScopedAResource::ScopedAResource;

    bool isOk() const { return get() != nullptr && AStatus_isOk(get()); }
    binder_exception_t getExceptionCode() const { return AStatus_getExceptionCode(get()); }
    int32_t getServiceSpecificError() const { return AStatus_getServiceSpecificError(get()); }
    binder_status_t getStatus() const { return AStatus_getStatus(get()); }
    const char* getMessage() const { return AStatus_getMessage(get()); }
    std::string getDescription() const {
        const char* text = AStatus_getDescription(get());
        std::string description = text == nullptr ? "" : text;
        AStatus_deleteDescription(text);
        return description;
    }

    static ScopedAStatus ok() { return ScopedAStatus(AStatus_newOk()); }
    static ScopedAStatus fromExceptionCode(binder_exception_t exception) {
        return ScopedAStatus(AStatus_fromExceptionCode(exception));
    }
    static ScopedAStatus fromExceptionCodeWithMessage(binder_exception_t exception,
                                                      const char* message) {
        return ScopedAStatus(AStatus_fromExceptionCodeWithMessage(exception, message));
    }
    static ScopedAStatus fromServiceSpecificError(int32_t serviceSpecific) {
        return ScopedAStatus(AStatus_fromServiceSpecificError(serviceSpecific));
    }
    static ScopedAStatus fromServiceSpecificErrorWithMessage(int32_t serviceSpecific,
                                                             const char* message) {
        return ScopedAStatus(AStatus_fromServiceSpecificErrorWithMessage(serviceSpecific, message));
    }
    static ScopedAStatus fromStatus(binder_status_t status) {
        return ScopedAStatus(AStatus_fromStatus(status));
    }
};

static inline std::ostream& operator<<(std::ostream& os, const ScopedAStatus& status) {
    return os << status.getDescription();
}

class ScopedAIBinder_DeathRecipient
    : public impl::ScopedAResource<AIBinder_DeathRecipient*, AIBinder_DeathRecipient_delete,
                                   nullptr> {
  public:
    using ScopedAResource::ScopedAResource;
};

class ScopedAIBinder_Weak
    : public impl::ScopedAResource<AIBinder_Weak*, AIBinder_Weak_delete, nullptr> {
  public:
    using ScopedAResource::ScopedAResource;

    SpAIBinder promote() const { return SpAIBinder(AIBinder_Weak_promote(get())); }
};

namespace internal {

inline void closeWithError(int fd) {
    if (fd == -1) return;
    if (::close(fd) != 0) {
        syslog(LOG_ERR, "Could not close FD %d: %s", fd, strerror(errno));
    }
}

}  // namespace internal

// Owns a descriptor; -1 is none.
class ScopedFileDescriptor : public impl::ScopedAResource<int, internal::closeWithError, -1> {
  public:
    using ScopedAResource::ScopedAResource;

    // Stays open across exec; empty if this one is, or if no descriptor is left.
    ScopedFileDescriptor dup() const { return ScopedFileDescriptor(::dup(get())); }

    bool operator==(const ScopedFileDescriptor& rhs) const { return get() == rhs.get(); }
    bool operator!=(const ScopedFileDescriptor& rhs) const { return get() != rhs.get(); }
    bool operator<(const ScopedFileDescriptor& rhs) const { return get() < rhs.get(); }
    bool operator>(const ScopedFileDescriptor& rhs) const { return get() > rhs.get(); }
    bool operator<=(const ScopedFileDescriptor& rhs) const { return get() <= rhs.get(); }
    bool operator>=(const ScopedFileDescriptor& rhs) const { return get() >= rhs.get(); }
};

}  // namespace ndk
