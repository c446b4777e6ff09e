// A class of objects that do nothing.
#pragma once

#include <android/binder_ibinder.h>

// A new class of the interface; its methods answer at once with STATUS_OK.
inline AIBinder_Class* NewPlainClass(const char* descriptor) {
    return AIBinder_Class_define(
            descriptor, [](void* data) { return data; }, [](void*) {},
            [](AIBinder*, transaction_code_t, const AParcel*, AParcel*) -> binder_status_t {
                return STATUS_OK;
            });
}
