// Host only: what the service manager process, and tools that look at it, need beyond the platform.
#pragma once

#include <android/binder_ibinder.h>
#include <stdbool.h>

__BEGIN_DECLS

// The service manager's interface. Strings and binders as in any parcel; each reply begins with a
// status header.
#define HOST_SERVICE_MANAGER_DESCRIPTOR "host.os.IServiceManager"
enum {
    HOST_SERVICE_MANAGER_CHECK = FIRST_CALL_TRANSACTION,     // String name -> binder or null
    HOST_SERVICE_MANAGER_ADD = FIRST_CALL_TRANSACTION + 1,   // String name, binder
    HOST_SERVICE_MANAGER_LIST = FIRST_CALL_TRANSACTION + 2,  // -> String[] names
};

// Whether a service may have this name.
bool AServiceManager_isValidServiceName(const char* instance);

// Calls back, before returning, with each registered name in alphabetical order.
// STATUS_DEAD_OBJECT if no service manager answers.
binder_status_t AServiceManager_forEachService(void* context, void (*callback)(const char* instance,
                                                                               void* context));

// Calls back, before returning, with the interface descriptor of a registered service, as the
// service itself tells it. STATUS_NAME_NOT_FOUND if nothing has that name; otherwise the status of
// asking the service.
binder_status_t AServiceManager_readInterface(const char* instance, void* context,
                                              void (*callback)(const char* descriptor,
                                                               void* context));

// Makes this process the service manager: binder (a reference is taken) answers under the fixed
// socket $STANDIN_BINDER_DIR/servicemanager from now on. To be called before any other use of the
// library. STATUS_ALREADY_EXISTS if another service manager listens there, STATUS_NO_INIT if the
// folder is not set or cannot be used (the log says why).
__attribute__((warn_unused_result)) binder_status_t AServiceManager_becomeServiceManager(
        AIBinder* binder);

__END_DECLS
