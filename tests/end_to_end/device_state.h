// What the processes of a stand-in device hold, as seen from inside it.
#pragma once

#include <map>
#include <string>

namespace end_to_end {

// By "NAME ID" of each process but this one: how many descriptors of which kind it has open.
using DeviceState = std::map<std::string, std::map<std::string, int>>;

// Waits, for a bounded time, until no service has a connection but the one to the service
// manager, and every session that was opened has ended. Services learn of a client's end after
// it has gone. A failed expectation when that does not come.
DeviceState idleDeviceState();

}  // namespace end_to_end
