// Publishing and finding services by name.
//
// Names: 1 to 127 characters of A-Z a-z 0-9 _ . - /, by convention "interface descriptor/instance".
// With STANDIN_BINDER_DIR set, names are kept by the service manager process that listens there;
// without it, by a registry inside this process.
#pragma once

#include <android/binder_ibinder.h>
#include <android/binder_status.h>
#include <sys/cdefs.h>

__BEGIN_DECLS

// Publishes the object; the registry takes a reference of its own. An existing name is replaced.
// Returns EX_NONE, EX_ILLEGAL_ARGUMENT (null object, bad name) or EX_TRANSACTION_FAILED.
__attribute__((warn_unused_result)) binder_exception_t AServiceManager_addService(
        AIBinder* binder, const char* instance) __INTRODUCED_IN(29);

// Asks once and never waits. Owned reference, or null if there is no such service.
__attribute__((warn_unused_result)) AIBinder* AServiceManager_checkService(const char* instance)
        __INTRODUCED_IN(29);
// Asks again for up to 5 s.
[[deprecated(
        "this polls for 5s, use AServiceManager_checkService or "
        "AServiceManager_waitForService instead")]] __attribute__((warn_unused_result)) AIBinder*
AServiceManager_getService(const char* instance) __INTRODUCED_IN(29);
// Blocks until the service exists, logging once a second what it waits for.
__attribute__((warn_unused_result)) AIBinder* AServiceManager_waitForService(const char* instance)
        __INTRODUCED_IN(31);

// On a device: asks the manifest. There is none here: what is registered counts as declared.
bool AServiceManager_isDeclared(const char* instance) __INTRODUCED_IN(31);

__END_DECLS
