// AIBinder_Class: the functions that serve all objects of one interface.
#include <android/binder_shell.h>
#include <host_binder_trace.h>

#include "ibinder.h"

AIBinder_Class* AIBinder_Class_define(const char* interfaceDescriptor,
                                      AIBinder_Class_onCreate onCreate,
                                      AIBinder_Class_onDestroy onDestroy,
                                      AIBinder_Class_onTransact onTransact) {
    if (interfaceDescriptor == nullptr || onCreate == nullptr || onDestroy == nullptr ||
        onTransact == nullptr) {
        return nullptr;
    }
    auto* clazz = new AIBinder_Class;  // lives as long as the process
    clazz->descriptor = interfaceDescriptor;
    clazz->onCreate = onCreate;
    clazz->onDestroy = onDestroy;
    clazz->onTransact = onTransact;
    return clazz;
}

void AIBinder_Class_setOnDump(AIBinder_Class* clazz, AIBinder_onDump onDump) {
    clazz->onDump = onDump;
}

void AIBinder_Class_setHandleShellCommand(AIBinder_Class* clazz,
                                          AIBinder_handleShellCommand handleShellCommand) {
    clazz->onShell = handleShellCommand;
}

void AIBinder_Class_disableInterfaceTokenHeader(AIBinder_Class* clazz) {
    clazz->hasInterfaceHeader = false;
}

const char* AIBinder_Class_getDescriptor(const AIBinder_Class* clazz) {
    return clazz->descriptor.c_str();
}

void AIBinder_Class_setTransactionNames(AIBinder_Class* clazz, const char* const* names,
                                        size_t count) {
    // A trace line may be using the old names: they stay.
    clazz->transactionNames = new std::vector<std::string>(names, names + count);
}
