// Binders and descriptors in a parcel.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "ibinder.h"
#include "parcel.h"

using hostbinder::kBinderHandle;
using hostbinder::kBinderNull;
using hostbinder::kDescriptor;
using hostbinder::ParcelObject;

binder_status_t AParcel_writeStrongBinder(AParcel* parcel, AIBinder* binder) {
    if (binder == nullptr) {
        binder_status_t status = parcel->writeObject(kBinderNull, nullptr, -1);
        return status == STATUS_OK
                       ? parcel->write(static_cast<int32_t>(hostbinder::kStabilityUndeclared))
                       : status;
    }
    AIBinder_incStrong(binder);
    binder_status_t status = parcel->writeObject(kBinderHandle, binder, -1);
    if (status != STATUS_OK) return status;
    return parcel->write(static_cast<int32_t>(binder->declaredStability()));
}

binder_status_t AParcel_readStrongBinder(const AParcel* parcel, AIBinder** binder) {
    const ParcelObject* object = nullptr;
    binder_status_t status = parcel->readObject(kBinderHandle, &object);
    if (status != STATUS_OK) return status;
    int32_t stability = 0;
    status = parcel->read(&stability);
    if (status != STATUS_OK) return status;
    if (object == nullptr) {
        if (stability != hostbinder::kStabilityUndeclared) return STATUS_BAD_TYPE;
        *binder = nullptr;
        return STATUS_OK;
    }
    if (!object->binder->adoptStability(stability)) return STATUS_BAD_TYPE;
    AIBinder_incStrong(object->binder);
    *binder = object->binder;
    return STATUS_OK;
}

binder_status_t AParcel_writeParcelFileDescriptor(AParcel* parcel, int fd) {
    if (fd < -1) return STATUS_UNKNOWN_ERROR;
    if (fd == -1) return parcel->write(int32_t{0});
    const int copy = fcntl(fd, F_DUPFD_CLOEXEC, 0);
    if (copy < 0) return errno == EMFILE ? STATUS_NO_MEMORY : STATUS_BAD_VALUE;
    binder_status_t status = parcel->write(int32_t{1});
    if (status == STATUS_OK) status = parcel->write(int32_t{0});  // no communication channel
    if (status != STATUS_OK) {
        close(copy);
        return status;
    }
    return parcel->writeObject(kDescriptor, nullptr, copy);
}

binder_status_t AParcel_readParcelFileDescriptor(const AParcel* parcel, int* fd) {
    int32_t present = 0;
    binder_status_t status = parcel->read(&present);
    if (status != STATUS_OK) return status;
    if (present == 0) {
        *fd = -1;
        return STATUS_OK;
    }
    int32_t channel = 0;
    status = parcel->read(&channel);
    if (status != STATUS_OK) return status;
    const ParcelObject* object = nullptr;
    status = parcel->readObject(kDescriptor, &object);
    if (status != STATUS_OK) return status;
    const int copy = fcntl(object->fd, F_DUPFD_CLOEXEC, 0);
    if (copy < 0) return STATUS_NO_MEMORY;
    *fd = copy;
    return STATUS_OK;
}
