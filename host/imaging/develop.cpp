// Frames developed, single or averaged, in strips of rows that threads share out among themselves.
#include <imaging/b2y.h>
#include <imaging/multi_frame.h>

#include <algorithm>
#include <functional>

#include "instruction_sets.h"
#include "parallel.h"
#include "plane_checks.h"

namespace imaging {

namespace {

// Even. Each strip reads 2 x kDemosaicMargin rows that its neighbours read, too.
constexpr uint32_t kStripRows = 128;

// Calls `develop` for every strip of a picture, with the number of the worker that does it.
void ForEachStrip(const RawView& raw, const MutableNv12View& out, uint32_t workers,
                  const std::function<void(DevelopJob, uint32_t worker)>& develop) {
    const uint32_t left = CropOffset(raw.width, out.width);
    const uint32_t top = CropOffset(raw.height, out.height);
    const uint32_t strips = (out.height + kStripRows - 1) / kStripRows;
    ParallelFor(strips, workers, [&](uint32_t strip, uint32_t worker) {
        const uint32_t begin = strip * kStripRows;
        const uint32_t end = std::min(begin + kStripRows, out.height);
        develop({raw, out, left, begin, end, top + begin}, worker);
    });
}

Result<Done> Check(const std::vector<RawView>& frames, const MutableRawView& scratch,
                   const MutableNv12View& out) {
    if (frames.empty() || frames.size() > kMaxAverageFrames) {
        return Failure{"average of " + std::to_string(frames.size()) + " frames: 1 to " +
                       std::to_string(kMaxAverageFrames) + " are possible"};
    }
    Result<Done> checked = CheckDevelopment(frames[0], out);
    if (checked.Ok()) checked = CheckRaw(scratch, "scratch frame");
    for (const RawView& frame : frames) {
        if (checked.Ok()) checked = CheckRaw(frame, "frame to average");
        if (checked.Ok() && (frame.width != scratch.width || frame.height != scratch.height)) {
            checked = Failure{"frame to average is " + Size(frame.width, frame.height) +
                              ", the scratch frame " + Size(scratch.width, scratch.height) +
                              ": they must be equal"};
        }
    }
    return checked;
}

}  // namespace

Result<Done> RawToNv12(const RawView& raw, const MutableNv12View& out, const Execution& execution) {
    Result<Done> checked = CheckDevelopment(raw, out);
    if (!checked.Ok()) return checked;
    const Functions& functions = FunctionsFor(execution.instructions);
    ForEachStrip(raw, out, execution.threads,
                 [&](const DevelopJob& job, uint32_t) { functions.develop(job, ToneCurve()); });
    return checked;
}

Result<Done> AverageToNv12(const std::vector<RawView>& frames, const MutableRawView& scratch,
                           const MutableNv12View& out, const Execution& execution) {
    Result<Done> checked = Check(frames, scratch, out);
    if (!checked.Ok()) return checked;
    // Each worker keeps to rows of its own in the scratch frame.
    const uint32_t rowsOfWorker = std::min(kStripRows + 2 * kDemosaicMargin, scratch.height);
    const uint32_t workers = std::min(execution.threads, scratch.height / rowsOfWorker);
    const Functions& functions = FunctionsFor(execution.instructions);
    ForEachStrip(frames[0], out, workers, [&](DevelopJob job, uint32_t worker) {
        // The strip's rows and those that its demosaic reaches. Where these end before the frame
        // does, no row beyond them is asked for; where the frame ends, both end.
        const uint32_t rows = job.end - job.begin;
        const uint32_t first = std::max(job.mosaicRow, kDemosaicMargin) - kDemosaicMargin;
        const uint32_t end = std::min(job.mosaicRow + rows + kDemosaicMargin, scratch.height);
        MutableRawView average = scratch;
        average.data += size_t{worker} * rowsOfWorker * scratch.strideBytes;
        average.height = end - first;
        functions.average({frames, first, average});
        job.raw = average;
        job.mosaicRow -= first;
        functions.develop(job, ToneCurve());
    });
    return checked;
}

}  // namespace imaging
