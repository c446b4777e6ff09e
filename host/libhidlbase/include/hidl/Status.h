// Status of a HIDL call, and Return<T>: a status with the value it protects.
#pragma once

#include <utils/Errors.h>
#include <utils/StrongPointer.h>

#include <cstdint>
#include <iosfwd>
#include <string>
#include <utility>

namespace android {
namespace hardware {

class Status final {
  public:
    enum Exception {
        EX_NONE = 0,
        EX_SECURITY = -1,
        EX_BAD_PARCELABLE = -2,
        EX_ILLEGAL_ARGUMENT = -3,
        EX_NULL_POINTER = -4,
        EX_ILLEGAL_STATE = -5,
        EX_NETWORK_MAIN_THREAD = -6,
        EX_UNSUPPORTED_OPERATION = -7,
        EX_HAS_REPLY_HEADER = -128,
        EX_TRANSACTION_FAILED = -129,  // the transport failed: transactionError() says how
    };

    Status() = default;  // OK

    static Status ok() { return Status(); }
    static Status fromExceptionCode(int32_t exceptionCode);
    static Status fromExceptionCode(int32_t exceptionCode, const char* message);
    static Status fromStatusT(status_t status);

    bool isOk() const { return mException == EX_NONE; }
    int32_t exceptionCode() const { return mException; }
    const char* exceptionMessage() const { return mMessage.c_str(); }
    // The transport's error; OK unless the exception is EX_TRANSACTION_FAILED.
    status_t transactionError() const {
        return mException == EX_TRANSACTION_FAILED ? mErrorCode : OK;
    }
    std::string description() const;

  private:
    int32_t mException = EX_NONE;
    status_t mErrorCode = OK;
    std::string mMessage;
};

std::ostream& operator<<(std::ostream& out, const Status& status);

namespace details {

// The part of Return<T> that does not depend on T. Move-only. A failure that nobody looked at (with
// isOk(), or isDeadObject() when that is true) aborts the process when it is dropped.
class return_status {
  public:
    return_status() = default;
    return_status(const Status& status) : mStatus(status) {}
    return_status(Status&& status) : mStatus(std::move(status)) {}
    return_status(const return_status&) = delete;
    return_status& operator=(const return_status&) = delete;
    return_status(return_status&& other) noexcept { take(other); }
    return_status& operator=(return_status&& other) noexcept;
    ~return_status() { abortIfUnchecked(); }

    bool isOk() const;
    bool isOkUnchecked() const { return mStatus.isOk(); }  // does not count as looking
    bool isDeadObject() const;
    std::string description() const { return mStatus.description(); }
    void assertOk() const;  // aborts the process unless the status is OK

  private:
    Status mStatus;
    mutable bool mChecked = false;

    void abortIfUnchecked() const;
    void take(return_status& other);
};

}  // namespace details

template <typename T>
class Return : public details::return_status {
  public:
    Return(T value) : mValue(std::move(value)) {}
    Return(const Status& status) : details::return_status(status) {}
    Return(Status&& status) : details::return_status(std::move(status)) {}
    Return(Return&&) = default;
    Return& operator=(Return&&) = default;
    ~Return() = default;

    // The value; aborts the process unless the status is OK.
    operator T() const {
        assertOk();
        return mValue;
    }
    T withDefault(T fallback) const { return isOk() ? mValue : fallback; }

  private:
    T mValue{};
};

template <typename T>
class Return<::android::sp<T>> : public details::return_status {
  public:
    Return(T* value) : mValue(value) {}
    template <typename U>
    Return(const ::android::sp<U>& value) : mValue(value) {}
    Return(const Status& status) : details::return_status(status) {}
    Return(Status&& status) : details::return_status(std::move(status)) {}
    Return(Return&&) = default;
    Return& operator=(Return&&) = default;
    ~Return() = default;

    operator ::android::sp<T>() const {
        assertOk();
        return mValue;
    }
    ::android::sp<T> withDefault(::android::sp<T> fallback) const {
        return isOk() ? mValue : fallback;
    }

  private:
    ::android::sp<T> mValue;
};

template <>
class Return<void> : public details::return_status {
  public:
    Return() = default;
    Return(const Status& status) : details::return_status(status) {}
    Return(Status&& status) : details::return_status(std::move(status)) {}
    Return(Return&&) = default;
    Return& operator=(Return&&) = default;
    ~Return() = default;
};

static inline Return<void> Void() {
    return Return<void>();
}

}  // namespace hardware
}  // namespace android
