// Opening of the vendor's same-process HAL libraries.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

// dlopen() of the library file `name` with `flag` (<dlfcn.h>), from the folders of the environment
// variable STANDIN_HAL_PATH (colon-separated) in order, or from /vendor/lib64/hw when it is unset
// or empty. `name` is a plain file name. Returns a handle for dlsym(); null after logging why.
void* android_load_sphal_library(const char* name, int flag);

// dlclose() of what android_load_sphal_library() returned: 0, or not 0 on failure.
int android_unload_sphal_library(void* handle);

// Deprecated. 1: nothing but vendor code runs here.
int android_is_in_vendor_process(void);

#ifdef __cplusplus
}
#endif
