// Makes one call of a platform function fail, in the process that this library is loaded into:
//
//     LD_PRELOAD=libinjector.so STANDIN_INJECT=KIND:N vexofflinecameratest -t B2Y
//
// The library's functions stand before those of the stand-in libraries and of libc that have the
// same names. Calls of the kind are counted from 1, over all threads; call N fails, and says so in
// the platform log (tag "Injector"): "call N fails: FUNCTION SUBJECT #K", the K-th of that name. A
// run without the line made fewer calls. Kinds:
//
//     dead-object         transactions with remote objects: not made, STATUS_DEAD_OBJECT
//     failed-transaction  the same, STATUS_FAILED_TRANSACTION
//     exception           answered with EX_ILLEGAL_STATE, without being made
//     service-specific    answered with service-specific error 1, without being made
//     lost-reply          made, and then STATUS_DEAD_OBJECT
//     class               a remote object's class is asked for: it is not the wanted one
//     library             lookups of mappers and HAL libraries: null
//     mapper-error        operations of the HIDL mapper: NO_RESOURCES
//     mapper-transport    the same: a broken transport
//     plane-layout        queries of plane layouts: an error
//     mapping             mmap: ENOMEM
//     descriptor          each function that makes descriptors: EMFILE
#pragma once

#include <dlfcn.h>

#include <string>

namespace injector {

enum class Kind {
    kNone,
    kDeadObject,
    kFailedTransaction,
    kException,
    kServiceSpecific,
    kLostReply,
    kClass,
    kLibrary,
    kMapperError,
    kMapperTransport,
    kPlaneLayout,
    kMapping,
    kDescriptor,
};

// The kind of this process. A STANDIN_INJECT that says none ends it with status 2.
Kind kind();

// Counts a call if it is of this process's kind; true if it is the one that fails.
bool fails(Kind kind, const std::string& function, const std::string& subject = "");

// The function of this name that a replaced one stands before.
template <typename Function>
Function next(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

}  // namespace injector
