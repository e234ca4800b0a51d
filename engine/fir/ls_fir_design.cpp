// ls_fir_design.cpp - the least-squares method, which has no solver of its own.
#include "engine/fir/ls_fir_design.h"

#include "engine/core/design_state.h"
#include "engine/core/front_end.h"
#include "engine/fir/optimal_setup.h"

#include <algorithm>

namespace brisel {

void ls_fir_design() {
  const FirEntry &entry = design_record.fir_designed;
  const auto taps = entry.coeff.begin();
  const bool half_response = entry.fir_type <= code(FirSymmetry::symmetric); // not that of a minimum phase filter
  const bool holds_taps =
      half_response && std::any_of(taps, taps + entry.unique_count, [](double tap) { return tap != 0; });
  if (!holds_taps) return post_message(Message::least_squares_keeps_nothing);
  if (!fir_band_setup(max_taps)) return;
  finish_optimal_entry("\n Least Square Filter Design\n");
  design_record.valid = 1;
  design_notes.push_back("The least squares method has no solver: the coefficients are those of the previous design.");
}

} // namespace brisel
