// iir_scaling.h - scaling the nodes of a digital filter so that none of them overflows.
//
// Node norms are largest magnitudes, overall gain left out [Jackson70], searched as for the gain (cascade_gain.h).
// Cascade, transposed structure: node j is the output of section j, |H_0 ... H_j|. Canonic structure: node j is the
// state of section j, |N_0 ... N_{j-1}| / |D_0 ... D_j|. Parallel form: node j is the output of section j, |H_j|. In
// all of them the node after the last section is 0.
//
// [Jackson70] L. B. Jackson, On the interaction of roundoff noise and dynamic range in digital filters, Bell Syst.
// Tech. J. 49, 1970.
#pragma once

#include "engine/core/code_tables.h"
#include "engine/core/records.h"

namespace brisel {

/// The canonic node norms and noise paths hold for the floating-point structures too.
constexpr bool is_transposed(SectionStructure structure) {
  return structure == SectionStructure::transposed;
}
constexpr bool is_scaled(SectionStructure structure) {
  return structure == SectionStructure::transposed || structure == SectionStructure::canonic;
}

struct NodePeaks {
  std::array<double, max_sections + 1> magnitude;
  std::array<double, max_sections + 1> angle; // radians per sample; the first place of the largest magnitude
};
NodePeaks cascade_node_peaks(const SectionEntry &cascade, SectionStructure structure);
NodePeaks parallel_node_peaks(const SectionEntry &parallel);

/// Scales the numerators of a transposed or canonic cascade so that all of its nodes have the same peak, and keeps the
/// transfer function: the overall gain takes what they lose. `result` receives the peaks before, and the scale factors
/// s_j: the numerator of section j is multiplied by s_{j+1} / s_j. Returns the peak of the last node that scaled, or 0
/// when a peak is 0 or undefined, with nothing changed.
double scale_cascade(SectionEntry &cascade, SectionStructure structure, QuantizationResult &result);

/// Divides the terms and the direct term of a sum by the largest of their peaks and multiplies its scaler by it.
/// Returns that peak, or 0 as above.
double scale_parallel(SectionEntry &parallel, QuantizationResult &result);

/// Stores peaks in the result: frequencies in radians per second.
void store_peaks(const NodePeaks &peaks, int section_count, double sample_rate,
                 std::array<double, max_sections + 1> &magnitude, std::array<double, max_sections + 1> &frequency);

} // namespace brisel
