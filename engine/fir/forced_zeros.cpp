#include "engine/fir/forced_zeros.h"

#include "engine/files/text_file.h"
#include "engine/fir/desired_response.h"

namespace brisel {

namespace {

/// Whether a gain is asked for at the two ends of the frequency range.
struct EndGains {
  bool at_zero, at_half;
};

EndGains end_gains(const FilterSpec &spec) {
  const bool to_half = spec.passband_edge[1] == std::numbers::pi;
  switch (static_cast<FilterType>(spec.type)) {
  case FilterType::low_pass:
  case FilterType::half_band:
  case FilterType::raised_cosine:
  case FilterType::root_raised_cosine:
    return {true, false};
  case FilterType::high_pass:
    return {false, true};
  case FilterType::band_stop:
    return {true, true};
  case FilterType::differentiator:
    return {false, to_half};
  case FilterType::hilbert:
    return {spec.passband_edge[0] == 0, to_half};
  case FilterType::multiband:
  case FilterType::arbitrary_magnitude: {
    const int last = spec.band_count - 1;
    return {spec.band_lower[0] == 0 && desired_at(spec, 0, 0) != 0,
            spec.band_upper[last] == std::numbers::pi && desired_at(spec, last, std::numbers::pi) != 0};
  }
  case FilterType::band_pass:
  case FilterType::arbitrary_group_delay:
    break;
  }
  return {};
}

} // namespace

std::vector<std::string> forced_zero_notes(const FilterSpec &spec, FirSymmetry symmetry, bool odd_length) {
  const EndGains asked = end_gains(spec);
  const bool symmetric = symmetry == FirSymmetry::symmetric;
  std::vector<std::string> notes;
  if (asked.at_zero && !symmetric)
    notes.push_back(std::string("An antisymmetric filter has a zero at frequency 0, where a gain is asked for. ") +
                    (spec.type == code(FilterType::hilbert)
                         ? "Move the lower edge up: no Hilbert transformer works at 0."
                         : "A symmetric filter has none there."));
  if (asked.at_half && symmetric != odd_length)
    notes.push_back(formatf("%s filter of %s length has a zero at half the sampling frequency, where a gain is asked "
                            "for. An %s length avoids it.",
                            symmetric ? "A symmetric" : "An antisymmetric", odd_length ? "odd" : "even",
                            odd_length ? "even" : "odd"));
  return notes;
}

} // namespace brisel
