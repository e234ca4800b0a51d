// data_files.h - coefficients as plain numbers: for MatLab and Octave, as a dataset of a simulator, and in the
// notations that programs and spreadsheets take. Every real number is written with the digits that read back to the
// same double.
#pragma once

#include "codegen/coefficient_table.h"
#include "engine/core/message_numbers.h"

#include <string>
#include <variant>

namespace brisel {

/// Why there is no text.
struct DataRefusal {
  Message number;
  std::string detail;
};
using DataText = std::variant<std::string, DataRefusal>;

/// The current design's FIR taps as a row vector, or its sections as a matrix with a row b0 b1 b2 a0 a1 a2 a section
/// and a0 = 1; both contain the gain. Entered systems are refused.
DataText matlab_text();

/// Format codes of the setting `COSSAPDataFormat`.
enum class DatasetFormat : std::uint8_t { integer, real };
/// One number a line; with `comments` lines that begin with "#" in front say what they are.
DataText cocentric_text(DatasetFormat format, bool comments);

enum class NumberNotation { decimal, word, hexadecimal };
enum class DataLayout { lines, commas, c_array };
struct DataFileOptions {
  CoefficientStage stage = CoefficientStage::quantized;
  NumberNotation notation = NumberNotation::decimal; // words only of the quantized stage
  DataLayout layout = DataLayout::lines;
};
/// `name` is the file's, after which a C array is named.
DataText data_file_text(const std::string &name, const DataFileOptions &options);

/// True when the current design is quantized in fixed point and its coefficients are words.
bool has_coefficient_words();

} // namespace brisel
