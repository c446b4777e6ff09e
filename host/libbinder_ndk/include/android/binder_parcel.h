// AParcel: the typed byte stream of a request or reply, with the objects and descriptors in it.
//
// Every function that returns binder_status_t returns STATUS_OK or leaves outputs untouched, unless
// its comment says otherwise. A parcel is used by one thread at a time.
// Array allocators get the length (-1: null array), put the place for the elements into *outBuffer
// and return false to refuse. Lengths of arrays are counts of elements.
#pragma once

#include <android/binder_status.h>
#include <stdbool.h>
#include <stddef.h>
#include <uchar.h>

struct AIBinder;
typedef struct AIBinder AIBinder;

__BEGIN_DECLS

struct AParcel;
typedef struct AParcel AParcel;

__attribute__((warn_unused_result)) AParcel* AParcel_create(void) __INTRODUCED_IN(31);
void AParcel_delete(AParcel* parcel) __INTRODUCED_IN(29);
// Bytes from the start, for the next read or write.
binder_status_t AParcel_setDataPosition(const AParcel* parcel, int32_t position)
        __INTRODUCED_IN(29);
int32_t AParcel_getDataPosition(const AParcel* parcel) __INTRODUCED_IN(29);
int32_t AParcel_getDataSize(const AParcel* parcel) __INTRODUCED_IN(31);
// Appends size bytes of from, beginning at start. STATUS_INVALID_OPERATION if from holds objects.
binder_status_t AParcel_appendFrom(const AParcel* from, AParcel* to, int32_t start, int32_t size)
        __INTRODUCED_IN(31);
// Copies len bytes beginning at start. STATUS_INVALID_OPERATION if the parcel holds objects.
binder_status_t AParcel_marshal(const AParcel* parcel, uint8_t* buffer, size_t start, size_t len)
        __INTRODUCED_IN(33);
// Replaces the content by len plain bytes; the position is at the start.
// STATUS_INVALID_OPERATION if the parcel holds objects.
binder_status_t AParcel_unmarshal(AParcel* parcel, const uint8_t* buffer, size_t len)
        __INTRODUCED_IN(33);

// Objects. Writing borrows the binder (null allowed); reading returns an owned reference or null.
binder_status_t AParcel_writeStrongBinder(AParcel* parcel, AIBinder* binder) __INTRODUCED_IN(29);
binder_status_t AParcel_readStrongBinder(const AParcel* parcel, AIBinder** binder)
        __INTRODUCED_IN(29);
// Descriptors. Writing duplicates (-1: null); reading returns an owned duplicate, or -1 for null.
binder_status_t AParcel_writeParcelFileDescriptor(AParcel* parcel, int fd);
binder_status_t AParcel_readParcelFileDescriptor(const AParcel* parcel, int* fd);

// EX_TRANSACTION_FAILED is not written but returned as the status it holds.
binder_status_t AParcel_writeStatusHeader(AParcel* parcel, const AStatus* status)
        __INTRODUCED_IN(29);
// *status is owned by the caller.
binder_status_t AParcel_readStatusHeader(const AParcel* parcel, AStatus** status)
        __INTRODUCED_IN(29);

// Strings: UTF-8 in memory, UTF-16 in the parcel. length excludes a NUL; null needs length -1.
binder_status_t AParcel_writeString(AParcel* parcel, const char* string, int32_t length)
        __INTRODUCED_IN(29);
// length includes the NUL the library writes; -1 (buffer null): null string.
typedef bool (*AParcel_stringAllocator)(void* stringData, int32_t length, char** buffer);
binder_status_t AParcel_readString(const AParcel* parcel, void* stringData,
                                   AParcel_stringAllocator allocator) __INTRODUCED_IN(29);

typedef binder_status_t (*AParcel_writeParcelableElement)(AParcel* parcel, const void* arrayData,
                                                          size_t index);
typedef bool (*AParcel_parcelableArrayAllocator)(void* arrayData, int32_t length);
typedef binder_status_t (*AParcel_readParcelableElement)(const AParcel* parcel, void* arrayData,
                                                         size_t index);
binder_status_t AParcel_writeParcelableArray(AParcel* parcel, const void* arrayData, int32_t length,
                                             AParcel_writeParcelableElement elementWriter)
        __INTRODUCED_IN(29);
binder_status_t AParcel_readParcelableArray(const AParcel* parcel, void* arrayData,
                                            AParcel_parcelableArrayAllocator allocator,
                                            AParcel_readParcelableElement elementReader)
        __INTRODUCED_IN(29);

binder_status_t AParcel_writeInt32(AParcel* parcel, int32_t value) __INTRODUCED_IN(29);
binder_status_t AParcel_writeInt64(AParcel* parcel, int64_t value) __INTRODUCED_IN(29);
binder_status_t AParcel_writeFloat(AParcel* parcel, float value) __INTRODUCED_IN(29);
binder_status_t AParcel_writeDouble(AParcel* parcel, double value) __INTRODUCED_IN(29);
binder_status_t AParcel_writeBool(AParcel* parcel, bool value) __INTRODUCED_IN(29);
binder_status_t AParcel_writeByte(AParcel* parcel, int8_t value) __INTRODUCED_IN(29);

binder_status_t AParcel_readInt32(const AParcel* parcel, int32_t* value) __INTRODUCED_IN(29);
binder_status_t AParcel_readInt64(const AParcel* parcel, int64_t* value) __INTRODUCED_IN(29);
binder_status_t AParcel_readFloat(const AParcel* parcel, float* value) __INTRODUCED_IN(29);
binder_status_t AParcel_readDouble(const AParcel* parcel, double* value) __INTRODUCED_IN(29);
binder_status_t AParcel_readBool(const AParcel* parcel, bool* value) __INTRODUCED_IN(29);
binder_status_t AParcel_readByte(const AParcel* parcel, int8_t* value) __INTRODUCED_IN(29);

// Null data needs length -1 (null array) or 0.
binder_status_t AParcel_writeInt32Array(AParcel* parcel, const int32_t* arrayData, int32_t length)
        __INTRODUCED_IN(29);
binder_status_t AParcel_writeInt64Array(AParcel* parcel, const int64_t* arrayData, int32_t length)
        __INTRODUCED_IN(29);
binder_status_t AParcel_writeByteArray(AParcel* parcel, const int8_t* arrayData, int32_t length)
        __INTRODUCED_IN(29);

typedef bool (*AParcel_int32ArrayAllocator)(void* arrayData, int32_t length, int32_t** outBuffer);
typedef bool (*AParcel_int64ArrayAllocator)(void* arrayData, int32_t length, int64_t** outBuffer);
typedef bool (*AParcel_byteArrayAllocator)(void* arrayData, int32_t length, int8_t** outBuffer);

binder_status_t AParcel_readInt32Array(const AParcel* parcel, void* arrayData,
                                       AParcel_int32ArrayAllocator allocator) __INTRODUCED_IN(29);
binder_status_t AParcel_readInt64Array(const AParcel* parcel, void* arrayData,
                                       AParcel_int64ArrayAllocator allocator) __INTRODUCED_IN(29);
binder_status_t AParcel_readByteArray(const AParcel* parcel, void* arrayData,
                                      AParcel_byteArrayAllocator allocator) __INTRODUCED_IN(29);

__END_DECLS
