// What the reference camera does with a frame. It is a working camera with plain physics, so that
// a tester can predict any pixel by hand: imaging/camera_physics.h states every step from RAW10 to
// YUV (RGGB, black level 64, white 1023, gains 2.0 / 1.0 / 1.5, Malvar-He-Cutler demosaic, sRGB
// tone curve, BT.601 full range, crop in the middle at an even offset).
//
//  B2Y  Each output is the developed RAW10 frame.
//  MMF  Each output is the average of the three RAW10 frames, rounded to the nearest code, and
//       developed. The average is held in a RAW10 buffer that is borrowed from the client, strip
//       by strip: it is never there as a whole. The 640 x 480 YUV frames are checked and read
//       nowhere: there are no faces to find in an average.
//  Y2J  Each output is a JPEG file (JFIF, 4:2:0, quality 95) of the YUV frame as it is, with an
//       EXIF block that carries the requested orientation; the picture itself is not turned. The
//       last 8 bytes of the stream's buffer size are the trailer: int32 blob id 0xff, int32 file
//       size.
#pragma once

#include "borrowed_buffers.h"
#include "session_worker.h"

namespace offlinecamera {

// Runs one request on its session's thread: sends the shutter message, makes the pictures, sends
// the result: the output buffers' and the input buffers' ids without handles, one part of metadata.
// If the pictures fail, an error message (ERROR_REQUEST) goes before the result, and the result's
// output buffers have status ERROR. Once stopped, nothing more is sent.
void RunFrame(const Request& request, const Client& client, const StopSignal& stop);

}  // namespace offlinecamera
