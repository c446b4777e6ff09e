// Running a measurement in the stand-in device.
#pragma once

namespace bench {

/** Goes on inside a device with plane layouts, whose data folder holds the source files: this
 * program begins anew there, and the call returns in it. Ends the program where that fails. */
void GoIntoDevice();

/** The device's data folder, as the programs in it see it. */
inline constexpr char kDataFolder[] = "/data/vendor/camera/offlinecameratest/";

}  // namespace bench
