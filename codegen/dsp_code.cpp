#include "codegen/dsp_code.h"

#include "codegen/filter_name.h"
#include "engine/core/front_end.h"
#include "engine/files/text_file.h"

#include <algorithm>
#include <cmath>

namespace brisel {

namespace {

constexpr std::size_t longest_temporary_name = 512;

std::string header(const std::string &path, const Origin &origin) {
  const std::string line(76, '*');
  std::string out = "/" + line.substr(1) + "\n" + line + "\n";
  out += "*   File: " + comment_text(path) + "\n";
  out += "*   Created by " + comment_text(origin.user) + " at " + origin.date + " " + origin.time + "\n";
  out += "*   Brisel Code Generator - Version 4.0  \n";
  return out + line + "\n" + line.substr(1) + "/\n";
}

void append_word(std::string &out, std::int64_t word, const char *end) {
  appendf(out, "   0x%04x%s\n", low_word(word), end);
}

} // namespace

std::string format_adsp218x(const std::string &path, const CoefficientFile &image, const Origin &origin) {
  std::string out = header(path, origin);
  const bool fir = image.variant == CoefficientVariant::fir;
  const bool transposed = image.scaling == ScalingCode::cascade_1, canonic = image.scaling == ScalingCode::cascade_2;
  const char *library = fir ? "ADSP218xF4" : transposed ? "ADSP218xF3" : canonic ? "ADSP218xF2" : "";
  const int n = image.section_count;
  if (fir) {
    appendf(out, "#define ntaps    %d;\n", image.count);
  } else {
    appendf(out, "#define nsecs    %d;\n", n);
    appendf(out, "#define datalen  %d;\n", transposed ? 2 * n + 2 : canonic ? 2 * n : 0);
    appendf(out, "#define coeflen  %d;\n", transposed || canonic ? 5 * n + 1 : 0);
    appendf(out, "#define sftcnt   %d;\n", final_shift(image, 0));
  }
  const double rate = image.unit == 0 ? image.sampling_frequency / two_pi : image.sampling_frequency;
  // Kept: truncated, so a rate that comes back from radians as 47999.9999 is written as 47999.
  appendf(out, "#define smprate  %.0f;\n", std::trunc(rate));
  appendf(out, "\n.include <%s.dsp>;\n\n", library);
  out += ".section/pm program\n.var/circ coeff[coeflen] =\n";
  if (fir) {
    for (std::size_t i = 0; i < image.integers.size(); i++)
      append_word(out, image.integers[i], i + 1 < image.integers.size() ? "," : ";");
    return out;
  }
  for (const SectionIntegers &section : image.section_integers) {
    const SectionWords w = section_words(section);
    const std::array<std::int64_t, 5> words =
        transposed ? std::array{w.b2, w.b1, w.b0, -w.a2, -w.a1} : std::array{-w.a2, -w.a1, w.b0, w.b2, w.b1};
    if (transposed || canonic)
      for (const std::int64_t word : words) append_word(out, word, ",");
  }
  if (transposed)
    appendf(out, "   0x%04x;\n", static_cast<std::uint32_t>(closing_gain(image))); // Kept: not masked to 16 bits
  else
    append_word(out, gain_word(image), ";");
  return out;
}

std::string format_dsp56800(const std::string &path, const CoefficientFile &image, const Origin &origin) {
  std::string out = header(path, origin);
  const std::string filter = filter_name(path);
  const char *name = filter.c_str();
  const int n = image.section_count;
  if (image.variant == CoefficientVariant::fir) {
    appendf(out, "Frac16 %s[] = {", name);
    const std::size_t taps = image.integers.size();
    for (std::size_t i = 0; i + 1 < taps; i++)
      appendf(out, "  0x%04x, //{coeff %zu}\n", low_word(image.integers[i]), i);
    if (taps) appendf(out, "  0x%04x}; //{coeff %zu}\n\n", low_word(image.integers[taps - 1]), taps - 1);
    return out;
  }
  if (image.scaling == ScalingCode::cascade_1) {
    // Kept: the transposed form is listed in the syntax of the ADSP-2100 family.
    appendf(out, ".VAR data[%d];\n.VAR/PM coeff[%d];\n.INIT coeff:\n", 2 * n + 2, 5 * n);
    for (int k = 0; k < n; k++) {
      const SectionWords w = section_words(image.section_integers[static_cast<std::size_t>(k)]);
      const int label = k + 1;
      appendf(out, "  0x%04x, {+b2/2 section %d}\n", low_word(w.b2), label);
      appendf(out, "  0x%04x, {+b1/2 section %d}\n", low_word(w.b1), label);
      appendf(out, "  0x%04x, {+b0/2 section %d}\n", low_word(w.b0), label);
      appendf(out, "  0x%04x, {-a2/2 section %d}\n", low_word(-w.a2), label);
      appendf(out, label < n ? "  0x%04x, {-a1/2 section %d}\n" : "  0x%04x; {-a1/2 section %d}\n\n", low_word(-w.a1),
              label);
    }
    appendf(out, ".VAR %s[4];\n.GLOBAL %s;\n.INIT %s:\n", name, name, name);
    appendf(out, "  ^data,^coeff,%d,%d;\n\n", n, final_shift(image, 1));
    out += "{ instruction:\n.EXTERNAL _inic_fm1,_cas_fm1; defined in ad218c1.dsp\n";
    appendf(out, "   I1 = ^%s; assign the pointer defined in this file\n", name);
    out += "   CALL _inic_fm1; initialize the buffer, call once\n";
    appendf(out, "   I1 = ^%s; assign the pointer\n", name);
    out += "   CALL _cas_fm1; call when a new input sample is ready\n";
    out += "   ; SR1 holds the input sample, SR1 holds the output sample after return}\n\n";
  } else if (image.scaling == ScalingCode::cascade_2) {
    appendf(out, " Frac16 %s_gain  = 0x%04x; //{hd/2 initial gain}\n", name, low_word(gain_word(image)));
    appendf(out, " Int16  %s_shift = 0x%04x; // final shift count\n", name, low_word(final_shift(image, 1)));
    appendf(out, " Frac16 %s[] = {", name);
    for (int k = 0; k < n; k++) {
      const SectionWords w = section_words(image.section_integers[static_cast<std::size_t>(k)]);
      const int label = k + 1;
      appendf(out, "  0x%04x, //{-a1/2 section %d}\n", low_word(-w.a1), label);
      appendf(out, "  0x%04x, //{-a2/2 section %d}\n", low_word(-w.a2), label);
      appendf(out, "  0x%04x, //{+b0/2 section %d}\n", low_word(w.b0), label);
      appendf(out, "  0x%04x, //{+b1/2 section %d}\n", low_word(w.b1), label);
      appendf(out, label < n ? "  0x%04x, //{+b2/2 section %d}\n" : "  0x%04x}; //{+b2/2 section %d}\n\n",
              low_word(w.b2), label);
    }
  }
  return out;
}

int prepare_dsp_code(DspFamily family, const std::string &path, const DesignState &state, const Origin &origin,
                     std::string &text, std::string *note) {
  if (state.DesignOrAnalysisType == code(DesignMethod::z_analysis) && !design_record.quantization.quant)
    return form_not_supported;
  const std::string temporary = path + "_BRISELSYS";
  if (temporary.size() > longest_temporary_name) return static_cast<int>(temporary.size());
  if (const int status = load_design_through(temporary); status != success) return status;
  const auto why = misfit(coefficient_file, family);
  if (!why)
    text = family == DspFamily::adsp218x ? format_adsp218x(path, coefficient_file, origin)
                                         : format_dsp56800(path, coefficient_file, origin);
  if (note && !why) *note = gain_note(coefficient_file, family).value_or("");
  release_coefficient_file();
  if (!why) return success;
  post_message(Message::dsp_word_misfit, *why);
  return static_cast<int>(Message::dsp_word_misfit);
}

static int generate(DspFamily family, const std::string &path, const DesignState &state, const Origin &origin,
                    std::string *note) {
  std::string text, why;
  if (const int status = prepare_dsp_code(family, path, state, origin, text, note); status != success) return status;
  return save_file(path, std::move(text), why) ? success : cannot_create;
}

int generate_adsp218x(const std::string &path, const DesignState &state, const std::string &user,
                      const std::string &date, const std::string &time, std::string *note) {
  return generate(DspFamily::adsp218x, path, state, {user, date, time}, note);
}

int generate_dsp56800(const std::string &path, const DesignState &state, const std::string &user,
                      const std::string &date, const std::string &time, std::string *note) {
  return generate(DspFamily::dsp56800, path, state, {user, date, time}, note);
}

} // namespace brisel
