// Which promise about future change an object's interface carries.
// A call is accepted if the object's level covers the level of the calling code.
#pragma once

#include <android/binder_ibinder.h>

__BEGIN_DECLS

enum {
    FLAG_PRIVATE_VENDOR = 0x10000000,
};

#if defined(__ANDROID_VENDOR__)
enum {
    FLAG_PRIVATE_LOCAL = FLAG_PRIVATE_VENDOR,
};
#else
enum {
    FLAG_PRIVATE_LOCAL = 0,
};
#endif

// Each ends the process if the object already has another level.
void AIBinder_markVendorStability(AIBinder* binder);
__attribute__((weak)) void AIBinder_markSystemStability(AIBinder* binder);
void AIBinder_markVintfStability(AIBinder* binder);

#if defined(__ANDROID_VENDOR__)
static inline void AIBinder_markCompilationUnitStability(AIBinder* binder) {
    AIBinder_markVendorStability(binder);
}
#else
static inline void AIBinder_markCompilationUnitStability(AIBinder* binder) {
    AIBinder_markSystemStability(binder);
}
#endif

__END_DECLS
