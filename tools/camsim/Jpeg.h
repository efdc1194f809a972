// The pictures a simulated camera pushes: small baseline JPEG files of one
// gray level, made here so that no picture file has to ship.
#ifndef CAMSIM_JPEG_H
#define CAMSIM_JPEG_H

#include <string>

namespace camsim {

// A baseline grayscale JPEG of width x height pixels (each 1..65535) whose
// every pixel has the given gray level (0..255).
std::string MakeGrayJpeg(int width, int height, int gray);

struct PictureSize {
  int width;
  int height;
};

// Picture size for the "resolution=" value of a JPEG request ("320", "640",
// "768", "1280"); anything else, or nothing, gives the small default 16x16.
PictureSize SizeForResolution(const std::string& resolution);

}  // namespace camsim

#endif
