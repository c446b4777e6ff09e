// base::Result by the name that runreport still uses.
#pragma once

#include <base/result.h>

namespace offlineframes {
using base::Done;
using base::Failure;
using base::Result;
}  // namespace offlineframes
