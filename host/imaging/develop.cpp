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

std::string Check(const std::vector<RawView>& frames, const MutableRawView& scratch,
                  const MutableNv12View& out) {
    if (frames.empty() || frames.size() > kMaxAverageFrames) {
        return "average of " + std::to_string(frames.size()) + " frames: 1 to " +
               std::to_string(kMaxAverageFrames) + " are possible";
    }
    std::string problem = CheckDevelopment(frames[0], out);
    if (problem.empty()) problem = CheckRaw(scratch, "scratch frame");
    for (const RawView& frame : frames) {
        if (problem.empty()) problem = CheckRaw(frame, "frame to average");
        if (problem.empty() && (frame.width != scratch.width || frame.height != scratch.height)) {
            problem = "frame to average is " + Size(frame.width, frame.height) +
                      ", the scratch frame " + Size(scratch.width, scratch.height) +
                      ": they must be equal";
        }
    }
    return problem;
}

}  // namespace

std::string RawToNv12(const RawView& raw, const MutableNv12View& out, const Execution& execution) {
    if (std::string problem = CheckDevelopment(raw, out); !problem.empty()) return problem;

    const Functions& functions = FunctionsFor(execution.instructions);
    ForEachStrip(raw, out, execution.threads,
                 [&](const DevelopJob& job, uint32_t) { functions.develop(job, ToneCurve()); });
    return {};
}

std::string AverageToNv12(const std::vector<RawView>& frames, const MutableRawView& scratch,
                          const MutableNv12View& out, const Execution& execution) {
    if (std::string problem = Check(frames, scratch, out); !problem.empty()) return problem;

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
    return {};
}

}  // namespace imaging
