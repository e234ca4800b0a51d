// digital_transform.h - from a digital lowpass to the requested band, by all-pass substitution of z^-1.
#pragma once

#include "engine/core/records.h"

#include <complex>
#include <optional>
#include <vector>

namespace brisel {

/// Moves the parallel form of a digital lowpass with cutoff `theta_p` (radians per sample), as impulse_invariant_map()
/// leaves it, to the band of the specification; its edges are the midpoints of the transitions. Terms of `target` are
/// (0, n1, n0) / (1, a1, a2), two of them for a pair of a band filter, with what is constant in the direct term.
void digital_transform(const SectionEntry &lowpass, SectionEntry &target, const FilterSpec &spec, double theta_p);

/// The place of the lowpass whose value the moved filter has at `z`.
std::complex<double> lowpass_place(const FilterSpec &spec, double theta_p, std::complex<double> z);

/// The places that the substitution takes a place of the lowpass to, one or, of a band filter, two; nothing stands for
/// infinity.
std::vector<std::complex<long double>> moved_places(const FilterSpec &spec, double theta_p,
                                                    std::optional<std::complex<long double>> lowpass);

} // namespace brisel
