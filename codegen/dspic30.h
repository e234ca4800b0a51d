// dspic30.h - source for the dsPIC30: assembly with coefficients, delay line and filter structure, a C header, a C
// program with build files for the simulator, and a script that plots the simulated impulse response.
#pragma once

#include "codegen/dsp_words.h"
#include "codegen/generated_file.h"

#include <string>
#include <vector>

namespace brisel {

enum class CoefficientSpace { x_data, program };
enum class PlotScript { none, matlab, octave };

struct DsPic30Options {
  bool assembly = true;
  bool header = false;
  CoefficientSpace space = CoefficientSpace::x_data;
  bool simulation = false;
  PlotScript script = PlotScript::none;
};

/// A base name whose last component begins with a letter and goes on with letters, digits, "_", "." and "-": it stands
/// in command lines, and in scripts it becomes the name of a variable. Names of the target's own files are taken.
bool is_usable_base_name(const std::string &base);

/// The files that the options ask for, in the order in which they are written: header, simulation, script, assembly.
/// `samples` is the length of the impulse response.
std::vector<GeneratedFile> format_dspic30(const std::string &base, const CoefficientFile &image,
                                          const DsPic30Options &options, int samples);

/// The files for the current design, which goes through a coefficient file named `base`. 0, or the status of that file;
/// a word that does not fit is told and gives `dsp_word_misfit`, an unusable name `bad_base_name`. `note`, if given,
/// receives what the user has to know.
int prepare_dspic30(const std::string &base, const DsPic30Options &options, std::vector<GeneratedFile> &files,
                    std::string *note = nullptr);

} // namespace brisel
