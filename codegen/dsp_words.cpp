#include "codegen/dsp_words.h"

#include "engine/files/text_file.h"

#include <algorithm>
#include <cstdlib>
#include <unistd.h>

namespace brisel {

SectionWords section_words(const SectionIntegers &s) {
  SectionWords w{s.b[0], s.b[1], s.b[2], s.a[0], s.a[1], static_cast<int>(std::max<std::int64_t>(s.shift, 1))};
  if (s.shift == 0) {
    for (std::int64_t *word : {&w.b0, &w.b1, &w.b2, &w.a1, &w.a2}) *word >>= 1;
  } else {
    for (std::int64_t *word : {&w.a1, &w.a2}) *word *= std::int64_t{1} << (w.exponent - 1);
  }
  return w;
}

int final_shift(const CoefficientFile &image, int start) {
  for (const SectionIntegers &s : image.section_integers) start += std::max(0, static_cast<int>(s.shift) - 1);
  return start;
}

std::int64_t gain_word(const CoefficientFile &image) {
  const std::int64_t half = image.gain_word >> 1;
  return image.shift < 0 ? half >> std::min<std::int64_t>(-image.shift, 63) : half;
}

std::int64_t closing_gain(const CoefficientFile &image) {
  std::int64_t g = image.gain_word;
  const std::int64_t s = image.shift;
  if (s < 0) g >>= std::min<std::int64_t>(-s, 63);
  // Kept: a gain above 1 is doubled into the word as far as it fits; what does not fit stays half of the gain.
  if (s == 1 && g == 16384)
    g = 32767;
  else if (s == 1 && g < 16384)
    g *= 2;
  return g;
}

// A gain above 1 may have a word longer than the word length; here only the leading bits can be used.
static void cut_gain_word(CoefficientFile &image) {
  const std::int64_t full = std::int64_t{1} << (image.bits - 1);
  for (; std::abs(image.gain_word) >= full; image.shift++) image.gain_word /= 2;
}

int load_design_through(const std::string &path) {
  if (const Status status = write_new_coefficient_file(path); status != success) return status;
  if (const int status = load_coefficient_file(path); status != success) return status;
  ::unlink(path.c_str());
  if (!coefficient_file.section_integers.empty()) cut_gain_word(coefficient_file);
  return success;
}

} // namespace brisel
