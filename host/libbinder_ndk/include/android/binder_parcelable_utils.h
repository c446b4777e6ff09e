// ParcelableHolder: a parcelable whose type is chosen by the application.
#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_parcel.h>
#include <android/binder_parcel_utils.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace ndk {

typedef int32_t parcelable_stability_t;
enum {
    STABILITY_LOCAL = 0,
    STABILITY_VINTF = 1,
};

// Wire form: int32 stability; int32 bytes that follow (0: empty); String descriptor; body.
// Holds either a value that was set or the bytes that were received, until asked for as a type.
class AParcelableHolder {
  public:
    AParcelableHolder() = delete;
    explicit AParcelableHolder(parcelable_stability_t stability)
        : mParcel(AParcel_create()), mStability(stability) {}
    AParcelableHolder(const AParcelableHolder& other)
        : mParcel(AParcel_create()), mStability(other.mStability) {
        copyFrom(other);
    }
    AParcelableHolder(AParcelableHolder&& other) = default;
    virtual ~AParcelableHolder() = default;

    AParcelableHolder& operator=(const AParcelableHolder& other) {
        if (this != &other && mStability == other.mStability) {
            reset();
            copyFrom(other);
        }
        return *this;
    }

    binder_status_t writeToParcel(AParcel* parcel) const {
        binder_status_t status = AParcel_writeInt32(parcel, mStability);
        if (status != STATUS_OK) return status;
        int32_t size = AParcel_getDataSize(mParcel.get());
        status = AParcel_writeInt32(parcel, size);
        if (status != STATUS_OK || size == 0) return status;
        return AParcel_appendFrom(mParcel.get(), parcel, 0, size);
    }

    binder_status_t readFromParcel(const AParcel* parcel) {
        reset();
        int32_t stability = 0;
        binder_status_t status = AParcel_readInt32(parcel, &stability);
        if (status != STATUS_OK) return status;
        if (stability != mStability) return STATUS_BAD_VALUE;
        int32_t size = 0;
        status = AParcel_readInt32(parcel, &size);
        if (status != STATUS_OK) return status;
        if (size < 0) return STATUS_BAD_VALUE;
        int32_t start = AParcel_getDataPosition(parcel);
        if (size > AParcel_getDataSize(parcel) - start) return STATUS_BAD_VALUE;
        status = AParcel_appendFrom(parcel, mParcel.get(), start, size);
        if (status != STATUS_OK) return status;
        return AParcel_setDataPosition(parcel, start + size);
    }

    // STATUS_BAD_VALUE if T promises less stability than the holder.
    template <typename T>
    binder_status_t setParcelable(const T& value) {
        if (mStability > T::_aidl_stability) return STATUS_BAD_VALUE;
        reset();
        binder_status_t status = AParcel_writeString(mParcel.get(), std::string(T::descriptor));
        if (status == STATUS_OK) status = value.writeToParcel(mParcel.get());
        if (status != STATUS_OK) reset();
        return status;
    }

    // *value is empty if the holder is empty or holds another type.
    template <typename T>
    binder_status_t getParcelable(std::optional<T>* value) const {
        *value = std::nullopt;
        if (mStability > T::_aidl_stability) return STATUS_BAD_VALUE;
        if (AParcel_getDataSize(mParcel.get()) == 0) return STATUS_OK;
        AParcel_setDataPosition(mParcel.get(), 0);
        std::string descriptor;
        binder_status_t status = AParcel_readString(mParcel.get(), &descriptor);
        if (status != STATUS_OK) return status;
        if (descriptor != T::descriptor) return STATUS_BAD_VALUE;
        T result;
        status = result.readFromParcel(mParcel.get());
        if (status == STATUS_OK) *value = std::move(result);
        return status;
    }

    void reset() { AParcel_reset(mParcel.get()); }
    parcelable_stability_t getStability() const { return mStability; }

    bool operator==(const AParcelableHolder& rhs) const { return this == &rhs; }
    bool operator!=(const AParcelableHolder& rhs) const { return this != &rhs; }
    bool operator<(const AParcelableHolder& rhs) const { return this < &rhs; }
    bool operator>(const AParcelableHolder& rhs) const { return this > &rhs; }
    bool operator<=(const AParcelableHolder& rhs) const { return this <= &rhs; }
    bool operator>=(const AParcelableHolder& rhs) const { return this >= &rhs; }

  private:
    void copyFrom(const AParcelableHolder& other) {
        AParcel_appendFrom(other.mParcel.get(), mParcel.get(), 0,
                           AParcel_getDataSize(other.mParcel.get()));
    }

    ScopedAParcel mParcel;  // descriptor and body; empty if nothing is held
    parcelable_stability_t mStability;
};

}  // namespace ndk
