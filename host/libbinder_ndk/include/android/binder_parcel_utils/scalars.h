// Single numbers, characters and booleans.
#pragma once

#include <android/binder_parcel.h>

#include <cstdint>

namespace ndk::internal {

inline binder_status_t writeScalar(AParcel* p, bool v) {
    return AParcel_writeBool(p, v);
}
inline binder_status_t writeScalar(AParcel* p, char16_t v) {
    return AParcel_writeChar(p, v);
}
inline binder_status_t writeScalar(AParcel* p, int8_t v) {
    return AParcel_writeByte(p, v);
}
inline binder_status_t writeScalar(AParcel* p, uint8_t v) {
    return AParcel_writeByte(p, static_cast<int8_t>(v));
}
inline binder_status_t writeScalar(AParcel* p, int32_t v) {
    return AParcel_writeInt32(p, v);
}
inline binder_status_t writeScalar(AParcel* p, uint32_t v) {
    return AParcel_writeUint32(p, v);
}
inline binder_status_t writeScalar(AParcel* p, int64_t v) {
    return AParcel_writeInt64(p, v);
}
inline binder_status_t writeScalar(AParcel* p, uint64_t v) {
    return AParcel_writeUint64(p, v);
}
inline binder_status_t writeScalar(AParcel* p, float v) {
    return AParcel_writeFloat(p, v);
}
inline binder_status_t writeScalar(AParcel* p, double v) {
    return AParcel_writeDouble(p, v);
}

inline binder_status_t readScalar(const AParcel* p, bool* v) {
    return AParcel_readBool(p, v);
}
inline binder_status_t readScalar(const AParcel* p, char16_t* v) {
    return AParcel_readChar(p, v);
}
inline binder_status_t readScalar(const AParcel* p, int8_t* v) {
    return AParcel_readByte(p, v);
}
inline binder_status_t readScalar(const AParcel* p, uint8_t* v) {
    int8_t value = 0;
    binder_status_t status = AParcel_readByte(p, &value);
    if (status == STATUS_OK) *v = static_cast<uint8_t>(value);
    return status;
}
inline binder_status_t readScalar(const AParcel* p, int32_t* v) {
    return AParcel_readInt32(p, v);
}
inline binder_status_t readScalar(const AParcel* p, uint32_t* v) {
    return AParcel_readUint32(p, v);
}
inline binder_status_t readScalar(const AParcel* p, int64_t* v) {
    return AParcel_readInt64(p, v);
}
inline binder_status_t readScalar(const AParcel* p, uint64_t* v) {
    return AParcel_readUint64(p, v);
}
inline binder_status_t readScalar(const AParcel* p, float* v) {
    return AParcel_readFloat(p, v);
}
inline binder_status_t readScalar(const AParcel* p, double* v) {
    return AParcel_readDouble(p, v);
}

}  // namespace ndk::internal
