// Status of a HIDL call, and Return<T>: a status with the value it protects.
#pragma once

#include <utils/Errors.h>

#include <string>
#include <utility>

namespace android::hardware {

// OK, or how the transport failed.
class Status final {
  public:
    static Status ok() { return Status(); }
    static Status fromStatusT(status_t status) {
        Status made;
        made.m_transportError = status;
        return made;
    }

    bool isOk() const { return m_transportError == OK; }
    status_t transactionError() const { return m_transportError; }
    std::string description() const;

  private:
    status_t m_transportError = OK;
};

namespace details {

// The part of Return<T> that does not depend on T. Move-only. A failure that was not examined (with
// isOk(), or isDeadObject() when that is true) aborts the process when it is dropped.
class return_status {
  public:
    return_status() = default;
    return_status(const Status& status) : m_status(status) {}
    return_status(return_status&& other) noexcept { swap(other); }
    return_status& operator=(return_status&& other) noexcept {
        return_status taken(std::move(other));
        swap(taken);
        return *this;
    }
    ~return_status();

    bool isOk() const;
    bool isDeadObject() const;
    std::string description() const { return m_status.description(); }

  protected:
    void assertOk() const;  // aborts the process unless the status is OK

  private:
    Status m_status;
    mutable bool m_examined = false;

    void swap(return_status& other) noexcept;
};

}  // namespace details

template <typename T>
class Return : public details::return_status {
  public:
    Return(T value) : m_value(std::move(value)) {}
    Return(const Status& status) : details::return_status(status) {}

    // The value; aborts the process unless the status is OK.
    operator T() const {
        assertOk();
        return m_value;
    }
    T withDefault(T fallback) const { return isOk() ? m_value : fallback; }

  private:
    T m_value{};
};

template <>
class Return<void> : public details::return_status {
  public:
    Return() = default;
    Return(const Status& status) : details::return_status(status) {}
};

static inline Return<void> Void() {
    return Return<void>();
}

}  // namespace android::hardware
