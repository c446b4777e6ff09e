// AIBinder_Class: the functions that serve all objects of one interface.
#include <android/binder_shell.h>
#include <host_binder_trace.h>

#include <mutex>
#include <vector>

#include "ibinder.h"

namespace {

// A class lives as long as the process, whether or not the program keeps the pointer.
void keepForEver(AIBinder_Class* clazz) {
    static std::mutex* const mutex = new std::mutex;
    static std::vector<AIBinder_Class*>* const classes = new std::vector<AIBinder_Class*>;
    std::lock_guard<std::mutex> lock(*mutex);
    classes->push_back(clazz);
}

}  // namespace

AIBinder_Class* AIBinder_Class_define(const char* interfaceDescriptor,
                                      AIBinder_Class_onCreate onCreate,
                                      AIBinder_Class_onDestroy onDestroy,
                                      AIBinder_Class_onTransact onTransact) {
    if (interfaceDescriptor == nullptr || onCreate == nullptr || onDestroy == nullptr ||
        onTransact == nullptr) {
        return nullptr;
    }
    auto* clazz = new AIBinder_Class;
    keepForEver(clazz);
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
