#include "codegen/data_files.h"

#include "codegen/filter_name.h"
#include "engine/analysis/pole_zero_form.h"
#include "engine/files/text_file.h"

#include <algorithm>

namespace brisel {

namespace {

constexpr std::size_t commas_per_line = 8;

const DataRefusal no_real_form{Message::unsupported_form, "the result has no coefficients of a digital filter"};

/// A row of numbers, ended by a line feed.
template <class Values> void append_row(std::string &out, const Values &values) {
  std::string_view separator;
  for (const double value : values) {
    out += separator;
    out += shortest(value);
    separator = " ";
  }
  out += "\n";
}

std::variant<CoefficientTable, DataRefusal> words_of_design() {
  CoefficientFile image;
  const auto table = image_of_design(image) ? word_coefficients(image) : std::nullopt;
  if (!table) return DataRefusal{Message::no_coefficient_words, ""};
  if (!words_fit(*table))
    return DataRefusal{Message::coefficient_word_misfit, formatf("the word length is %d bits", table->bits)};
  return *table;
}

std::variant<CoefficientTable, DataRefusal> table_of_design(bool words, CoefficientStage stage) {
  if (words) return words_of_design();
  if (auto table = real_coefficients(stage)) return std::move(*table);
  return no_real_form;
}

/// The numbers as text, words in `notation`.
std::vector<std::string> numbers_of(const CoefficientTable &table, NumberNotation notation, const char *prefix) {
  std::vector<std::string> numbers;
  numbers.reserve(table.reals.size() + table.words.size());
  for (const double value : table.reals) numbers.push_back(shortest(value));
  const int digits = (table.bits + 3) / 4;
  const std::uint64_t mask = ~std::uint64_t{0} >> (64 - std::max(table.bits, 1));
  for (const std::int64_t word : table.words) {
    if (notation == NumberNotation::hexadecimal)
      numbers.push_back(formatf("%s%0*llX", prefix, digits,
                                static_cast<unsigned long long>(static_cast<std::uint64_t>(word) & mask)));
    else
      numbers.push_back(std::to_string(word));
  }
  return numbers;
}

std::string element_type(const CoefficientTable &table, NumberNotation notation) {
  if (notation == NumberNotation::decimal) return "double";
  const int size = table.bits <= 8 ? 8 : table.bits <= 16 ? 16 : table.bits <= 32 ? 32 : 64;
  return formatf("%sint%d_t", notation == NumberNotation::hexadecimal ? "u" : "", size);
}

std::string c_array(const std::string &name, const CoefficientTable &table, NumberNotation notation) {
  std::string out = "/* " + table.title + "\n * " + table.order + "\n";
  for (const std::string &remark : table.remarks) out += " * " + remark + "\n";
  if (notation == NumberNotation::hexadecimal) appendf(out, " * words of %d bits in two's complement\n", table.bits);
  out += " */\n";
  if (notation != NumberNotation::decimal) out += "#include <stdint.h>\n\n";
  const auto numbers = numbers_of(table, notation, "0x");
  appendf(out, "static const %s %s[%zu] = {\n", element_type(table, notation).c_str(), filter_name(name).c_str(),
          numbers.size());
  for (const std::string &number : numbers) out += "    " + number + ",\n";
  return out + "};\n";
}

} // namespace

DataText matlab_text() {
  const int method = design_record.selections.DesignOrAnalysisType;
  if (method != code(DesignMethod::iir) && !is_fir_method(method)) return DataRefusal{Message::matlab_needs_design, ""};
  std::string out;
  if (is_fir_method(method)) {
    const auto taps = real_coefficients(CoefficientStage::quantized);
    if (!taps) return DataRefusal{Message::result_not_finite, "a coefficient cannot be written"};
    append_row(out, taps->reals);
    return out;
  }
  // A cascade that was derived from another form leaves out that form's delay, which its poles and zeros still show.
  const IirForms &forms = design_record.z_quantized;
  const bool own = RealizationForm{design_record.realization} == RealizationForm::cascade;
  const int delay = own ? 0 : pole_count(forms.pole_zero) - zero_count(forms.pole_zero);
  const auto rows = form_exists(forms, RealizationForm::cascade) ? section_matrix(forms.cascade, delay) : std::nullopt;
  if (!rows) return DataRefusal{Message::unsupported_form, "the filter has no cascade of second-order sections"};
  for (const auto &row : *rows) append_row(out, row);
  return out;
}

DataText cocentric_text(DatasetFormat format, bool comments) {
  const bool words = format == DatasetFormat::integer;
  auto made = table_of_design(words, CoefficientStage::quantized);
  if (auto *refusal = std::get_if<DataRefusal>(&made)) return std::move(*refusal);
  const auto &table = std::get<CoefficientTable>(made);
  std::string out;
  if (comments) {
    out += "# " + table.title + "\n# " + table.order + "\n";
    for (const std::string &remark : table.remarks) out += "# " + remark + "\n";
  }
  for (const std::string &number : numbers_of(table, NumberNotation::word, "")) out += number + "\n";
  return out;
}

DataText data_file_text(const std::string &name, const DataFileOptions &options) {
  const bool words = options.notation != NumberNotation::decimal;
  if (words && options.stage == CoefficientStage::unquantized) return DataRefusal{Message::no_coefficient_words, ""};
  auto made = table_of_design(words, options.stage);
  if (auto *refusal = std::get_if<DataRefusal>(&made)) return std::move(*refusal);
  const auto &table = std::get<CoefficientTable>(made);
  if (options.layout == DataLayout::c_array) return c_array(name, table, options.notation);
  const auto numbers = numbers_of(table, options.notation, "");
  std::string out;
  for (std::size_t i = 0; i < numbers.size(); i++) {
    out += numbers[i];
    const bool last = i + 1 == numbers.size();
    if (options.layout == DataLayout::lines || last)
      out += "\n";
    else
      out += (i + 1) % commas_per_line ? ", " : ",\n";
  }
  return out;
}

bool has_coefficient_words() {
  return std::holds_alternative<CoefficientTable>(words_of_design());
}

} // namespace brisel
