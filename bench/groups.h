// The groups of comparisons, a file each.
#pragma once

namespace bench {

void MeasureImaging();  // the pixel pipeline, beside a naive one and libjpeg-turbo
void MeasureLoading();  // the tool's source loaders, beside the same reads without stdio
void MeasureRuns();     // the tool as a whole, beside copies of its files
void MeasureBinder();   // calls between processes, beside a bare socket; all on one core

// The other process of MeasureBinder: registers an object under the name and serves it until it is
// killed.
[[noreturn]] void ServeEcho(const char* name);

}  // namespace bench
