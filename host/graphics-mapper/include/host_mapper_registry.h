// Host only: takes back what IMapper::registerAsService() did.
#pragma once

#include <string>

namespace host {

// Drops the registered mapper, if any: getService() falls back to the vendor's. Any thread.
void unregisterMapper(const std::string& serviceName = "default");

}  // namespace host
