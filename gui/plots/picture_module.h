// picture_module.h - the door to the pictures for a program that is not linked with the toolkit: a batch job loads the
// module brisel_pictures only when a picture was asked for.
#pragma once

#include "engine/analysis/plot_arrays.h"

#include <string>
#include <vector>

namespace brisel {

struct PictureSize {
  int width = 1200, height = 800; // pixels
  double scale = 1.5;             // of texts and lines; 1 is meant for a screen
};

/// Everything that the module draws from; it has none of the engine's state of its own. The arrays behind the
/// descriptions and the state must outlive the call.
struct PictureJob {
  std::vector<PlotDescription> plots; // in the order of the pages
  const PlotState *state = nullptr;
  const DisplaySettings *display = nullptr; // fonts and lines; colours are black on white
  bool grid = true;
  std::string problem; // the line that says which filter it is
  PictureSize size;
  bool png = false, svg = false, pdf = false;
};

struct Picture {
  std::string name; // of the plot kind with an extension, "magnitude.png"; the document is "plots.pdf"
  std::string bytes;
};

struct PictureResult {
  std::vector<Picture> pictures;
  std::string error; // one line without its end when the result is false
};

/// Loads the module from the program's folder or from ../lib/brisel beside it and draws. False, with the reason in
/// `result.error`, when there is no module, no font, or a picture cannot be drawn.
bool render_pictures(const std::string &program_folder, const PictureJob &job, PictureResult &result);

} // namespace brisel

/// The module's entry. Starts the toolkit without a display for the time of the call and is quiet about it; locale and
/// standard error are as before afterwards. 1 when all pictures are there.
extern "C" int brisel_render_pictures(const brisel::PictureJob *job, brisel::PictureResult *result);
