// Opening of the vendor's same-process HAL libraries.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

// dlopen() of the library file `name` with `flag` (<dlfcn.h>), from the folders of the environment
// variable STANDIN_HAL_PATH (colon-separated) in order, or from /vendor/lib64/hw when it is unset
// or empty. `name` is a plain file name. Returns a handle for dlsym(); null after logging why.
void* android_load_sphal_library(const char* name, int flag);

#ifdef __cplusplus
}
#endif
