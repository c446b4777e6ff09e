// Exact pictures of a service with the reference service's physics.
#include "device.h"

namespace conformance {

Checks PhysicsChecks() {
    return {};
}

}  // namespace conformance
