// The frames that a run read and wrote, with geometry and a reduced picture.
#pragma once

#include <offlineframes/file_io.h>
#include <offlineframes/frame_geometry.h>

#include <vector>

#include "report.h"

namespace runreport {

// Fills report->sources and report->dumps. Sources outside the inputs' data folder are left out; a
// file without a picture has a note that says why.
void ReadFrames(const std::vector<runlog::Source>& sources, const Inputs& inputs, Report* report);

// Sets the frame's reduced picture, or a note that says why it has none. `bytes` are those of a
// frame of this geometry. A mosaic's cells are averaged colour by colour, then developed.
void PictureOfFrame(const offlineframes::Bytes& bytes, const offlineframes::FrameGeometry& geometry,
                    Frame* frame);

// The same for a JPEG file, as it is stored: not turned by its orientation. Sets its size, too.
void PictureOfJpeg(const offlineframes::Bytes& file, Frame* frame);

}  // namespace runreport
