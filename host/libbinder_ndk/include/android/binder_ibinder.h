// AIBinder: an object that can be called, here or in another process.
//
// References: functions named "new", "promote" and out parameters return an owned strong reference,
// which the caller ends with AIBinder_decStrong. Every other AIBinder* is borrowed for the call.
#pragma once

#include <android/binder_parcel.h>
#include <android/binder_status.h>
#include <stdint.h>
#include <sys/types.h>

__BEGIN_DECLS

enum {
    // The caller does not wait and gets no reply. Such calls to one object run in order.
    FLAG_ONEWAY = 0x01,
};
typedef uint32_t binder_flags_t;

typedef uint32_t transaction_code_t;
enum {
    // The range of a class's own codes, both ends included.
    FIRST_CALL_TRANSACTION = 0x00000001,
    LAST_CALL_TRANSACTION = 0x00ffffff,
};

struct AIBinder;
typedef struct AIBinder AIBinder;

// What all objects of one interface share. Lives as long as the process.
struct AIBinder_Class;
typedef struct AIBinder_Class AIBinder_Class;

// A reference that does not keep the object alive.
struct AIBinder_Weak;
typedef struct AIBinder_Weak AIBinder_Weak;

struct AIBinder_DeathRecipient;
typedef struct AIBinder_DeathRecipient AIBinder_DeathRecipient;

// Makes the user data of a new local object from the argument of AIBinder_new.
typedef void* (*AIBinder_Class_onCreate)(void* args);
typedef void (*AIBinder_Class_onDestroy)(void* userData);
// Serves one call; both parcels are borrowed. A non-zero result is the caller's transport status.
typedef binder_status_t (*AIBinder_Class_onTransact)(AIBinder* binder, transaction_code_t code,
                                                     const AParcel* in, AParcel* out);

// Null if any argument is null. The descriptor is copied.
__attribute__((warn_unused_result)) AIBinder_Class* AIBinder_Class_define(
        const char* interfaceDescriptor, AIBinder_Class_onCreate onCreate,
        AIBinder_Class_onDestroy onDestroy, AIBinder_Class_onTransact onTransact)
        __INTRODUCED_IN(29);
const char* AIBinder_Class_getDescriptor(const AIBinder_Class* clazz) __INTRODUCED_IN(31);

__attribute__((warn_unused_result)) AIBinder* AIBinder_new(const AIBinder_Class* clazz, void* args)
        __INTRODUCED_IN(29);
bool AIBinder_isRemote(const AIBinder* binder) __INTRODUCED_IN(29);
bool AIBinder_isAlive(const AIBinder* binder) __INTRODUCED_IN(29);
binder_status_t AIBinder_ping(AIBinder* binder) __INTRODUCED_IN(29);

// STATUS_INVALID_OPERATION for a local object, STATUS_DEAD_OBJECT if it is dead already.
binder_status_t AIBinder_linkToDeath(AIBinder* binder, AIBinder_DeathRecipient* recipient,
                                     void* cookie) __INTRODUCED_IN(29);
// STATUS_NAME_NOT_FOUND if recipient and cookie are not linked.
binder_status_t AIBinder_unlinkToDeath(AIBinder* binder, AIBinder_DeathRecipient* recipient,
                                       void* cookie) __INTRODUCED_IN(29);

// Who made the call this thread serves; the process itself outside of a call.
uid_t AIBinder_getCallingUid(void) __INTRODUCED_IN(29);
pid_t AIBinder_getCallingPid(void) __INTRODUCED_IN(29);
bool AIBinder_isHandlingTransaction(void) __INTRODUCED_IN(33);

void AIBinder_incStrong(AIBinder* binder) __INTRODUCED_IN(29);
void AIBinder_decStrong(AIBinder* binder) __INTRODUCED_IN(29);

// True if the object is (now) of this class. For a remote object the first class with the right
// descriptor stays; asking for the descriptor may cost one transaction.
bool AIBinder_associateClass(AIBinder* binder, const AIBinder_Class* clazz) __INTRODUCED_IN(29);
const AIBinder_Class* AIBinder_getClass(AIBinder* binder) __INTRODUCED_IN(29);
// Null for a remote object.
void* AIBinder_getUserData(AIBinder* binder) __INTRODUCED_IN(29);

// Makes the request parcel for one call of this object. The caller owns it until it is transacted.
binder_status_t AIBinder_prepareTransaction(AIBinder* binder, AParcel** in) __INTRODUCED_IN(29);
// Takes ownership of *in, whatever happens. *out is owned by the caller, null on failure.
binder_status_t AIBinder_transact(AIBinder* binder, transaction_code_t code, AParcel** in,
                                  AParcel** out, binder_flags_t flags) __INTRODUCED_IN(29);

__attribute__((warn_unused_result)) AIBinder_Weak* AIBinder_Weak_new(AIBinder* binder)
        __INTRODUCED_IN(29);
void AIBinder_Weak_delete(AIBinder_Weak* weakBinder) __INTRODUCED_IN(29);
// An owned strong reference, or null if the object is gone.
__attribute__((warn_unused_result)) AIBinder* AIBinder_Weak_promote(AIBinder_Weak* weakBinder)
        __INTRODUCED_IN(29);
bool AIBinder_lt(const AIBinder* lhs, const AIBinder* rhs) __INTRODUCED_IN(31);

// Called on a pool thread.
typedef void (*AIBinder_DeathRecipient_onBinderDied)(void* cookie);
// Called once per link when the link ends, after onBinderDied if that is called.
typedef void (*AIBinder_DeathRecipient_onBinderUnlinked)(void* cookie);

__attribute__((warn_unused_result)) AIBinder_DeathRecipient* AIBinder_DeathRecipient_new(
        AIBinder_DeathRecipient_onBinderDied onBinderDied) __INTRODUCED_IN(29);
// To be set before the first link.
void AIBinder_DeathRecipient_setOnUnlinked(AIBinder_DeathRecipient* recipient,
                                           AIBinder_DeathRecipient_onBinderUnlinked onUnlinked)
        __INTRODUCED_IN(33);
// Ends every link of the recipient; no callback starts afterwards.
void AIBinder_DeathRecipient_delete(AIBinder_DeathRecipient* recipient) __INTRODUCED_IN(29);

__END_DECLS
