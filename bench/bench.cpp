// Measures the stand-in beside baselines that run in turns with it; see measure.h.
#include "device.h"
#include "groups.h"
#include "measure.h"

int main(int argc, char** argv) {
    if (argc > 1) bench::ServeEcho(argv[1]);
    bench::GoIntoDevice();
    bench::PrintHead();
    bench::MeasureImaging();
    bench::MeasureLoading();
    bench::MeasureRuns();
    bench::MeasureBinder();  // last: leaves this process on one core
}
