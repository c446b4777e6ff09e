// AParcel functions for platform code.
#pragma once

#include <android/binder_parcel.h>

__BEGIN_DECLS

// The content is cleared from memory when the parcel goes.
void AParcel_markSensitive(const AParcel* parcel) __INTRODUCED_IN(31);
// Whether descriptors may be written; always true here.
bool AParcel_getAllowFds(const AParcel* parcel) __INTRODUCED_IN(33);

__END_DECLS
