// coefficient_file.h - filter coefficient files (.flt): a finished design for code generators, and back.
//
// Writer and reader share one image of the file. A design becomes an image, an image becomes text; text becomes an
// image, and an image becomes the entered system that analysis works with.
#pragma once

#include "engine/core/design_state.h"
#include "engine/core/status.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brisel {

enum class CoefficientVariant : std::int8_t { iir = 1, fir = 2 };
enum class QuantizationType : std::int8_t {
  block_floating_point = 1, // IIR sections with a leading denominator coefficient of their own
  fractional_fixed_point,   // IIR
  floating_point,
  fir_fixed_point,
};
/// What the coefficients of an IIR file are scaled for.
enum class ScalingCode : std::int8_t {
  cascade_1 = 1, // transposed canonic sections
  cascade_2,     // canonic sections
  parallel_1,
  parallel_2,
  floating_cascade,
  floating_sum,
  ratio,
  ladder_1,
  ladder_2,
  lattice,
};

/// One section as integers: a true coefficient is its integer times 2^shift / 2^(bits - 1). `a0` is 2^(bits - 1 -
/// shift) but in block floating point.
struct SectionIntegers {
  std::int64_t shift;
  std::array<std::int64_t, 3> b;
  std::int64_t a0;
  std::array<std::int64_t, 2> a; // a1, a2 as the denominator has them
};
/// One section in floating point; its leading denominator coefficient is 1.
struct SectionReals {
  std::array<double, 3> b;
  std::array<double, 2> a;
};

/// What a coefficient file says. Frequencies in radians per second, ripples in dB and not negative.
struct CoefficientFile {
  std::string path;
  bool loaded = false;
  CoefficientVariant variant = CoefficientVariant::fir;
  std::int8_t filter_type = 0;  // IIR
  bool system_analysis = false; // IIR: an entered system, whose filter type is 0
  std::uint8_t unit = 0;        // 0 hertz, 1 radians per second
  int count = 0;                // taps, or the order of an IIR filter
  int section_count = 0;
  int bits = 0;
  QuantizationType quantization = QuantizationType::floating_point;
  ScalingCode scaling = ScalingCode::cascade_1;
  std::int64_t shift = 0;        // FIR: of the gain. IIR: the gain is gain_word * 2^shift / 2^(bits - 1)
  std::int64_t gain_word = 0;    // IIR, integer listings only; at least half scale
  double gain_multiplier = 1;    // the overall gain itself; of a sum its scale
  std::int64_t direct_shift = 0; // sums: the direct term, as the gain
  std::int64_t direct_word = 0;
  double direct_term = 0;
  double passband_ripple = 0;
  double stopband_ripple = 0;
  std::array<double, 2> passband_edge{};
  std::array<double, 2> stopband_edge{};
  double sampling_frequency = 0;
  std::int8_t analog_type = 0;                   // written, but passed over by the reader
  ZTransform z_transform = ZTransform::bilinear; // likewise; s_domain_only stands for "Z DOMAIN"

  std::vector<std::int64_t> integers; // FIR fixed point, one a tap
  std::vector<double> reals;          // FIR: one a tap. Ratio, ladder, lattice: the lists one behind the other
  std::vector<SectionIntegers> section_integers;
  std::vector<SectionReals> section_reals;
  std::vector<double> section_scale; // block floating point sums: the factor of each section
  int first_count = 0; // reals of the first list: numerator, leading coefficients of a ladder, gammas of a lattice
  int lead = 0;        // ladder and lattice: leading coefficients
  int rate_width = 12; // characters of the sampling frequency, for the writer
};

/// The file last loaded.
extern CoefficientFile coefficient_file;

/// Why and where a file was refused.
struct CoefficientReading {
  int status = 0; // number of the file format
  int line = 0;
  std::string last_line;
  std::string reason;
  bool complains = true; // a failure is also told to the front end
};

/// The text of a file, IIR reals `real_width` characters wide. Nothing when a value is not finite or does not fit.
std::optional<std::string> format_coefficient_file(const CoefficientFile &image, int real_width);
/// Fills `image` from a text. The status is that of the file format, 0 when the text is good; the front end is told
/// about any other, and the image is released.
int read_coefficient_text(std::string_view text, CoefficientFile &image, CoefficientReading *reading = nullptr);

/// The current design as an image. False, with a message to show: no form that a file can hold.
bool image_of_design(CoefficientFile &image);
/// The current IIR result in another of its forms, in floating point.
bool image_in_form(RealizationForm form, CoefficientFile &image);
/// Gives the gains of integer listings all the digits that they have, whatever the word length. False: there are none.
bool lengthen_gain_words(CoefficientFile &image);
/// The text of the current design's file. Nothing, and a message shown, when there is none.
std::optional<std::string> format_current_coefficient_file(int real_width);

/// Writes the current design as a temporary file with all digits: a file that exists already is somebody else's and is
/// refused; a failure shows a message.
Status write_new_coefficient_file(const std::string &path);

/// Loads a file into `coefficient_file`: 0, or 1 or 2 as the format's status says.
int load_coefficient_file(const std::string &path, CoefficientReading *reading = nullptr);
void release_coefficient_file();
/// Brings the current design into `coefficient_file` by way of "_temp.flt" in the current folder. 1: no design, or the
/// file is in the way; 2: the design is not quantized; both have been shown.
int load_current_design();

/// Makes the filter of an image an entered system of the z domain. Nothing when it has no such form (a denominator that
/// begins with 0).
std::optional<InputOption> coefficients_to_system(const CoefficientFile &image, SystemEntries &entries);
/// The same for the file last loaded, which becomes the system that is analysed next, in its own unit.
Status analyze_coefficient_file();

} // namespace brisel
