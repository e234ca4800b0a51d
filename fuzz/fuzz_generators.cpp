// fuzz_generators.cpp - generated code and data of any record: no number in them is not finite, no comment can be left
// by a hostile name, every name is an identifier.
#include "codegen/c_code.h"
#include "codegen/data_files.h"
#include "codegen/dsp_code.h"
#include "codegen/dspic30.h"
#include "codegen/filter_name.h"
#include "engine/core/start_up.h"
#include "fuzz/check.h"
#include "fuzz/filled_record.h"
#include "fuzz/quiet_front_end.h"

#include <cctype>
#include <memory>

using namespace brisel;

namespace {

int count(std::string_view text, std::string_view part) {
  int found = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != text.npos; at += part.size()) found++;
  return found;
}

bool is_word(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}

// A filter may be called nan.
void check_numbers(std::string_view text, std::string_view name) {
  for (const std::string_view word : {"nan", "inf", "NAN", "INF"})
    for (std::size_t at = 0; (at = text.find(word, at)) != text.npos; at++) {
      const bool begins = at == 0 || !is_word(text[at - 1]);
      const bool ends = at + word.size() >= text.size() || !is_word(text[at + word.size()]);
      require(!(begins && ends) || word == name, "every number is finite");
    }
}

void check_name(const std::string &name) {
  require(!name.empty() && name.size() <= 15 && !std::isdigit(static_cast<unsigned char>(name[0])), "a name");
  for (const char c : name) require(is_word(c), "an identifier");
}

void fill_record(ByteSource &in) {
  DesignRecord &r = design_record;
  const bool fir = in.byte() % 3 == 0;
  r.selections = design_state;
  r.selections.DesignOrAnalysisType = static_cast<std::int8_t>(fir ? 1 + in.below(4) : 6 * in.below(2));
  r.selections.z_input_option = static_cast<std::int8_t>(in.below(7));
  r.selections.unit_factor = two_pi;
  r.quantization = quantization_settings;
  r.quantization.quant = in.byte() % 2;
  r.quantization.qtype = in.byte() % 2;
  r.quantization.ibit = in.byte() < 200 ? 16 : 2 + in.below(31);
  r.quantization.rtype1 = in.below(4);
  r.loaded.sampling_frequency = two_pi * 8000;
  r.spec = r.loaded;
  r.valid = 1;
  r.realization = static_cast<std::int8_t>(in.below(6));
  if (!fir) return fill_form(in, RealizationForm{r.realization}, 12, r.z_quantized);
  for (FirEntry *entry : {&r.fir, &r.fir_unquantized}) {
    entry->length = 1 + in.below(40);
    entry->fir_type = static_cast<std::int8_t>(in.below(3));
    entry->sample_rate = two_pi * 8000;
    entry->gain = in.coefficient();
    entry->shift = in.byte() % 8 - 4;
    for (int i = 0; i < entry->length; i++) entry->coeff[static_cast<std::size_t>(i)] = in.coefficient() / 2;
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  static QuietFrontEnd screen;
  static const std::unique_ptr<CoefficientFile> image = std::make_unique<CoefficientFile>();
  set_start_values();
  ByteSource in(data, size);
  fill_record(in);
  const std::string path = in.rest(), user = path, name = filter_name(path);
  check_name(name);

  std::string text;
  if (format_c_code(path, design_record, user, "d", "t", text) == success) {
    check_numbers(text.substr(text.find("*/")), name);
    require(count(text, "/*") >= count(text, "*/"), "no comment is left");
    const std::size_t end = text.find("*/");
    require(text.rfind("***", end) != text.npos && text.find("Created by") < end, "the header is one comment");
  }
  if (image_of_design(*image)) {
    const Origin origin{user, "d", "t"};
    std::vector<std::string> sources;
    if (!misfit(*image, DspFamily::adsp218x)) sources.push_back(format_adsp218x(path, *image, origin));
    if (!misfit(*image, DspFamily::dsp56800)) sources.push_back(format_dsp56800(path, *image, origin));
    for (const std::string &source : sources) {
      require(source.find("Created by") < source.find("*/"), "the header is one comment");
      check_numbers(source.substr(source.find("*/")), name);
    }
    DsPic30Options options;
    options.simulation = true;
    options.script = PlotScript::octave;
    if (is_usable_base_name(path) && !misfit(*image, DspFamily::dspic30))
      for (const GeneratedFile &file : format_dspic30(path, *image, options, 200))
        require(!file.text.empty(), "a file");
  }
  for (const DataText &made :
       {matlab_text(), cocentric_text(DatasetFormat::real, true), cocentric_text(DatasetFormat::integer, false),
        data_file_text(path, {CoefficientStage::quantized, NumberNotation::decimal, DataLayout::c_array})})
    if (const auto *numbers = std::get_if<std::string>(&made)) check_numbers(*numbers, name);
  return 0;
}
