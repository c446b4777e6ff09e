// Status and the checks of Return<T>.
#include <hidl/HidlInternal.h>
#include <hidl/Status.h>

#include <ostream>

namespace android {
namespace hardware {

Status Status::fromExceptionCode(int32_t exceptionCode) {
    Status status;
    status.mException = exceptionCode;
    if (exceptionCode == EX_TRANSACTION_FAILED) status.mErrorCode = FAILED_TRANSACTION;
    return status;
}

Status Status::fromExceptionCode(int32_t exceptionCode, const char* message) {
    Status status = fromExceptionCode(exceptionCode);
    if (message != nullptr) status.mMessage = message;
    return status;
}

Status Status::fromStatusT(status_t error) {
    Status status;
    if (error == OK) return status;
    status.mException = EX_TRANSACTION_FAILED;
    status.mErrorCode = error;
    return status;
}

std::string Status::description() const {
    if (isOk()) return "Status(EX_NONE): 'No error'";
    std::string text = "Status(" + std::to_string(mException) + ")";
    if (mException == EX_TRANSACTION_FAILED) {
        text += ": transport error " + std::to_string(mErrorCode);
    }
    if (!mMessage.empty()) text += ": '" + mMessage + "'";
    return text;
}

std::ostream& operator<<(std::ostream& out, const Status& status) {
    return out << status.description();
}

namespace details {

return_status& return_status::operator=(return_status&& other) noexcept {
    if (this != &other) {
        abortIfUnchecked();
        take(other);
    }
    return *this;
}

bool return_status::isOk() const {
    mChecked = true;
    return mStatus.isOk();
}

bool return_status::isDeadObject() const {
    const bool dead = mStatus.transactionError() == DEAD_OBJECT;
    if (dead) mChecked = true;
    return dead;
}

void return_status::assertOk() const {
    mChecked = true;
    if (mStatus.isOk()) return;
    fatal(("the value of a failed HIDL call was used, test isOk() first: " + description())
                  .c_str());
}

void return_status::abortIfUnchecked() const {
    if (mStatus.isOk() || mChecked) return;
    fatal(("a failed HIDL call was ignored, test isOk() of its result: " + description()).c_str());
}

// Takes the status and the duty to look at it.
void return_status::take(return_status& other) {
    mStatus = std::move(other.mStatus);
    mChecked = other.mChecked;
    other.mStatus = Status();
}

}  // namespace details
}  // namespace hardware
}  // namespace android
