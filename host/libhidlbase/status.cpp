// Status and the checks of Return<T>.
#include <hidl/HidlInternal.h>
#include <hidl/Status.h>

namespace android::hardware {

std::string Status::description() const {
    if (isOk()) return "Status(EX_NONE): 'No error'";
    return "Status(EX_TRANSACTION_FAILED): transport error " + std::to_string(m_transportError);
}

namespace details {

return_status::~return_status() {
    if (m_status.isOk() || m_examined) return;
    fatal(("a failed HIDL call was ignored, test isOk() of its result: " + description()).c_str());
}

bool return_status::isOk() const {
    m_examined = true;
    return m_status.isOk();
}

bool return_status::isDeadObject() const {
    const bool dead = m_status.transactionError() == DEAD_OBJECT;
    if (dead) m_examined = true;
    return dead;
}

void return_status::assertOk() const {
    m_examined = true;
    if (m_status.isOk()) return;
    fatal(("the value of a failed HIDL call was used, test isOk() first: " + description())
                  .c_str());
}

// The duty to examine the status moves, too.
void return_status::swap(return_status& other) noexcept {
    std::swap(m_status, other.m_status);
    std::swap(m_examined, other.m_examined);
}

}  // namespace details
}  // namespace android::hardware
