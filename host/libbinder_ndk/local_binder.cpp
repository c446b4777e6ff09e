// Local objects: serving calls, from this process (straight) and from others.
#include "local_binder.h"

#include <unistd.h>

#include <utility>
#include <vector>

#include "log.h"

namespace hostbinder {

binder_status_t LocalBinder::transact(transaction_code_t code, AParcel* in, AParcel** out,
                                      binder_flags_t /*flags*/) {
    in->setPosition(0);
    auto reply = std::make_unique<AParcel>();
    binder_status_t status = handle(code, in, reply.get());
    if (status != STATUS_OK) return status;
    reply->setPosition(0);
    *out = reply.release();
    return STATUS_OK;
}

bool LocalBinder::associateClass(const AIBinder_Class* other) {
    if (other == clazz()) return true;
    if (other->descriptor == clazz()->descriptor) {
        BINDER_LOGE("'%s' is defined twice in this process; the object has the other class",
                    other->descriptor.c_str());
    }
    return false;
}

binder_status_t LocalBinder::handle(transaction_code_t code, const AParcel* in, AParcel* out) {
    if (code >= FIRST_CALL_TRANSACTION && code <= LAST_CALL_TRANSACTION) {
        if (clazz()->hasInterfaceHeader) {
            binder_status_t status = checkInterfaceHeader(in, clazz()->descriptor);
            if (status != STATUS_OK) {
                BINDER_LOGW("call %u to '%s' has another interface's header", code,
                            clazz()->descriptor.c_str());
                return status;
            }
        }
        return clazz()->onTransact(this, code, in, out);
    }
    switch (code) {
        case kPingCode:
            return STATUS_OK;
        case kDescriptorCode:
            return writeString(out, clazz()->descriptor);
        case kDumpCode:
            return handleDump(in);
        case kShellCode:
            return handleShell(in);
        case kExtensionCode: {
            AIBinder* found = extension();
            binder_status_t status = AParcel_writeStrongBinder(out, found);
            if (found != nullptr) AIBinder_decStrong(found);
            return status;
        }
        default:
            return STATUS_UNKNOWN_TRANSACTION;
    }
}

namespace {

// Descriptors and string arguments of a dump or shell request.
struct CommandArguments {
    std::vector<int> fds;
    std::vector<std::string> strings;
    std::vector<const char*> pointers;

    ~CommandArguments() {
        for (int fd : fds) close(fd);
    }

    binder_status_t read(const AParcel* in, size_t fdCount) {
        for (size_t i = 0; i < fdCount; ++i) {
            int fd = -1;
            binder_status_t status = AParcel_readParcelFileDescriptor(in, &fd);
            if (status != STATUS_OK) return status;
            fds.push_back(fd);
        }
        int32_t count = 0;
        binder_status_t status = in->read(&count);
        if (status != STATUS_OK) return status;
        if (count < 0 || static_cast<size_t>(count) > in->left() / 4) return STATUS_BAD_VALUE;
        strings.resize(static_cast<size_t>(count));
        for (std::string& string : strings) {
            status = readString(in, &string);
            if (status != STATUS_OK) return status;
            pointers.push_back(string.c_str());
        }
        return STATUS_OK;
    }
};

}  // namespace

binder_status_t LocalBinder::handleDump(const AParcel* in) {
    CommandArguments arguments;
    binder_status_t status = arguments.read(in, 1);
    AIBinder_onDump onDump = clazz()->onDump;
    if (status != STATUS_OK || onDump == nullptr) return status;
    return onDump(this, arguments.fds[0], arguments.pointers.data(),
                  static_cast<uint32_t>(arguments.pointers.size()));
}

binder_status_t LocalBinder::handleShell(const AParcel* in) {
    CommandArguments arguments;
    binder_status_t status = arguments.read(in, 3);
    AIBinder_handleShellCommand onShell = clazz()->onShell;
    if (status != STATUS_OK || onShell == nullptr) return status;
    return onShell(this, arguments.fds[0], arguments.fds[1], arguments.fds[2],
                   arguments.pointers.data(), static_cast<uint32_t>(arguments.pointers.size()));
}

void LocalBinder::setExtension(AIBinder* extension) {
    AIBinder_incStrong(extension);
    AIBinder* old = nullptr;
    {
        std::lock_guard<std::mutex> lock(mMutex);
        old = std::exchange(mExtension, extension);
    }
    if (old != nullptr) AIBinder_decStrong(old);
}

AIBinder* LocalBinder::extension() {
    std::lock_guard<std::mutex> lock(mMutex);
    AIBinder_incStrong(mExtension);
    return mExtension;
}

bool LocalBinder::beginOneway(std::unique_ptr<Work>& call) {
    std::lock_guard<std::mutex> lock(mMutex);
    if (!mOnewayRunning) {
        mOnewayRunning = true;
        return true;
    }
    mOnewayCalls.push_back(std::move(call));
    return false;
}

std::unique_ptr<Work> LocalBinder::nextOneway() {
    std::lock_guard<std::mutex> lock(mMutex);
    if (mOnewayCalls.empty()) {
        mOnewayRunning = false;
        return nullptr;
    }
    std::unique_ptr<Work> next = std::move(mOnewayCalls.front());
    mOnewayCalls.pop_front();
    return next;
}

void LocalBinder::onLastStrongReference() {
    clazz()->onDestroy(mData);
    if (mExtension != nullptr) AIBinder_decStrong(mExtension);
}

}  // namespace hostbinder
