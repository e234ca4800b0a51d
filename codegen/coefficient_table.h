// coefficient_table.h - the numbers of a filter in one row, for files that carry nothing but numbers.
#pragma once

#include "engine/core/design_state.h"
#include "engine/files/coefficient_file.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace brisel {

/// b0 b1 b2 a1 a2 of every section with a leading denominator coefficient of 1, and what a file says about them.
struct CoefficientTable {
  std::string title;                // which filter
  std::string order;                // which number stands where
  int bits = 0;                     // of the words, 0 for reals
  std::vector<double> reals;        // either these
  std::vector<std::int64_t> words;  // or these
  std::vector<std::string> remarks; // what the words stand for
};

enum class CoefficientStage { unquantized, quantized };

/// The coefficients of the current result that make the filter without anything beside them: FIR taps hold the gain,
/// sections follow theirs. Nothing for a system without digital form, or a value that is not finite.
std::optional<CoefficientTable> real_coefficients(CoefficientStage stage);

/// The words of a filter quantized in fixed point: FIR taps, or shift counts and sections. Nothing for other filters.
std::optional<CoefficientTable> word_coefficients(const CoefficientFile &image);

/// True when every word lies within the table's bits.
bool words_fit(const CoefficientTable &table);

/// The rows b0 b1 b2 1 a1 a2 of a cascade, its gain in the first one. `delay` samples that the sections are to answer
/// later move numerators one place behind where these end with 0. Nothing when there is no such matrix.
using SectionMatrix = std::vector<std::array<double, 6>>;
std::optional<SectionMatrix> section_matrix(const SectionEntry &cascade, int delay);

} // namespace brisel
