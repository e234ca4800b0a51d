// fuzz_coefficients.cpp - coefficient files: whatever is read is written, reads back as the same, and can be analysed.
#include "engine/files/coefficient_file.h"
#include "fuzz/long_exponent.h"
#include "fuzz/quiet_front_end.h"

#include <cmath>
#include <cstdlib>

using namespace brisel;

/// The digits of a number come by one rounded multiplication a decimal place.
static bool close(double a, double b) {
  const double places = a == 0 ? 0 : std::fabs(std::log10(std::fabs(a)));
  return std::fabs(a - b) <= (2e-15 + 3e-16 * places) * std::fabs(a) + 1e-300;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  static QuietFrontEnd screen;
  CoefficientFile image, again;
  if (read_coefficient_text({reinterpret_cast<const char *>(data), size}, image) != 0) return 0;
  coefficients_to_system(image, z_entries);
  const auto text = format_coefficient_file(image, 22);
  if (!text) std::abort();
  if (read_coefficient_text(*text, again) != 0) {
    if (!has_long_exponent(*text)) std::abort();
    return 0;
  }
  if (again.integers != image.integers || again.reals.size() != image.reals.size() ||
      again.section_integers.size() != image.section_integers.size() || again.count != image.count)
    std::abort();
  for (std::size_t i = 0; i < image.reals.size(); i++)
    if (!close(image.reals[i], again.reals[i])) std::abort();
  for (std::size_t i = 0; i < image.section_integers.size(); i++)
    if (image.section_integers[i].a != again.section_integers[i].a) std::abort();
  return 0;
}
