#include "engine/files/saved_filter.h"

#include "engine/analysis/response_departure.h"
#include "engine/core/front_end.h"
#include "engine/files/coefficient_file.h"
#include "engine/files/entered_fir.h"
#include "engine/files/text_file.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>

namespace brisel {

namespace {

constexpr double allowed_db = 0.05;
constexpr double same_rate = 1e-12;
constexpr double nothing_common = std::numeric_limits<double>::infinity();
// A number of the fixed-digit format: sign, point and exponent take six characters.
constexpr int format_characters = 6;
constexpr int stated_rate_width = 12;

// --- a system of any kind, as its response needs it ---

struct Filter {
  bool fir = false;
  Domain domain = Domain::z;
  InputOption option = InputOption::ratio;
  std::unique_ptr<IirForms> forms; // the entry of the option counts
  std::vector<double> taps;        // all of them, or reflection coefficients
  double gain = 1;                 // of the taps
  double rate = 0;

  FormOfSystem form() const { return {domain, option, forms.get()}; }
  FirForm fir_form() const { return {taps, gain, option == InputOption::lattice_fir}; }
};

struct FilterMaker {
  Filter filter;
  IirForms &forms() {
    filter.forms = std::make_unique<IirForms>();
    return *filter.forms;
  }
  void operator()(const RatioEntry *entry) { forms().ratio = *entry; }
  void operator()(const PoleZeroEntry *entry) { forms().pole_zero = *entry; }
  void operator()(const SectionEntry *entry) {
    (filter.option == InputOption::sum ? forms().parallel : forms().cascade) = *entry;
  }
  void operator()(const LatticeEntry *entry) { forms().lattice = *entry; }
  void operator()(const LadderEntry *entry) {
    (filter.option == InputOption::ladder_1 ? forms().ladder_1 : forms().ladder_2) = *entry;
  }
  void operator()(const FirEntry *entry) {
    filter.fir = true;
    filter.gain = entry->gain;
    filter.taps.resize(static_cast<std::size_t>(entry->length));
    const double sign = filter.option == InputOption::antisymmetric_fir ? -1 : 1;
    const int half = entry->unique_count;
    for (int i = 0; i < entry->length; i++) {
      double &tap = filter.taps[static_cast<std::size_t>(i)];
      if (!is_half_response(filter.option))
        tap = entry->coeff[i];
      else
        tap = i < half ? entry->coeff[half - 1 - i] : sign * entry->coeff[i - (entry->length - half)];
    }
  }
};

Filter filter_of(Domain domain, InputOption option, SystemEntry entry) {
  FilterMaker maker;
  maker.filter.domain = domain;
  maker.filter.option = option;
  maker.filter.rate = std::visit([](const auto *system) { return system->sample_rate; }, entry);
  std::visit(maker, entry);
  return std::move(maker.filter);
}

double departure(const Filter &filter, const Filter &again, double rate_again) {
  if (filter.fir != again.fir || filter.domain != again.domain) return nothing_common;
  return filter.fir ? response_departure(filter.fir_form(), filter.rate, again.fir_form(), rate_again)
                    : response_departure(filter.form(), filter.rate, again.form(), rate_again);
}

// --- the rule ---

struct FileDigits {
  int reals;
  int rate; // of the sampling frequency; 0: those of the format
};

/// A kind of file for the rule below.
struct FileKind {
  const char *name;
  int stated_digits; // where the search begins
  bool fixed;        // this number was asked for
  std::function<std::optional<std::string>(FileDigits)> format;
  std::function<std::optional<Filter>(std::string_view)> read;
  std::function<bool()> lengthen_words; // once, when the response is off; false: there are none
};

std::string decibels(double db) {
  return std::isfinite(db) ? formatf("%.3g dB", db) : std::string("no longer the filter's at all");
}

SavingOutcome save(const Filter &filter, FileKind kind) {
  FileDigits digits{kind.stated_digits, 0};
  std::string note;
  double stated_departure = 0;
  for (bool first = true;; first = false) {
    auto text = kind.format(digits);
    if (!text) return SavingRefusal{Message::result_not_finite, "a coefficient cannot be written"};
    const auto again = kind.read(*text);
    if (!again) return SavingRefusal{.reason = formatf("a %s of it could not be read back", kind.name)};
    const double off = departure(filter, *again, again->rate);
    if (first) stated_departure = off;
    if (off <= allowed_db) {
      if (digits.reals != kind.stated_digits)
        note += formatf("%sThe %s has %d digits: with %d the response would be %s off.", note.empty() ? "" : " ",
                        kind.name, digits.reals, kind.stated_digits, decibels(stated_departure).c_str());
      return SavedFilter{std::move(*text), std::move(note)};
    }
    if (digits.rate == 0 && std::fabs(again->rate / filter.rate - 1) > same_rate &&
        departure(filter, filter, again->rate) > allowed_db) {
      digits.rate = max_file_digits;
      note += formatf("The sampling frequency of the %s has %d digits, because the usual ones would move the response.",
                      kind.name, digits.rate);
      continue;
    }
    if (kind.lengthen_words && kind.lengthen_words()) {
      kind.lengthen_words = nullptr;
      note += formatf("The gain words of the %s are longer than the word length, which would put the response %s off.",
                      kind.name, decibels(off).c_str());
      continue;
    }
    if (kind.fixed) {
      note += formatf("%sThe response of the %s with %d digits is %s off.", note.empty() ? "" : " ", kind.name,
                      digits.reals, decibels(off).c_str());
      return SavedFilter{std::move(*text), std::move(note)};
    }
    if (digits.reals == max_file_digits)
      return SavingRefusal{.reason = formatf("%d digits in a %s would leave its response %s off", digits.reals,
                                             kind.name, decibels(off).c_str())};
    digits.reals++;
  }
}

// --- both kinds of file ---

/// Both domains, 3 MB each, only as far as they are used.
struct Scratch {
  DesignState state{};
  SystemEntries z, s;
};

std::optional<Filter> read_back_system(std::string_view text) {
  const auto scratch = std::make_unique_for_overwrite<Scratch>();
  SystemReading reading;
  reading.complains = false;
  if (read_system_text(text, scratch->state, scratch->z, scratch->s, &reading) != success) return std::nullopt;
  const SystemEntries &entries = reading.domain == Domain::z ? scratch->z : scratch->s;
  return filter_of(reading.domain, reading.option, system_entry(entries, reading.option));
}

std::optional<Filter> read_back_coefficients(std::string_view text) {
  CoefficientFile image;
  CoefficientReading reading;
  reading.complains = false;
  if (read_coefficient_text(text, image, &reading) != 0) return std::nullopt;
  const auto scratch = std::make_unique_for_overwrite<Scratch>();
  const auto option = coefficients_to_system(image, scratch->z);
  if (!option) return std::nullopt;
  return filter_of(Domain::z, *option, system_entry(scratch->z, *option));
}

SavingOutcome save_image(const Filter &filter, CoefficientFile image, int digits) {
  const auto format = [&image](FileDigits wanted) {
    image.rate_width = wanted.rate ? wanted.rate + format_characters : stated_rate_width;
    return format_coefficient_file(image, wanted.reals + format_characters);
  };
  return save(filter, {.name = "coefficient file",
                       .stated_digits = digits ? digits : design_state.fleng - format_characters,
                       .fixed = digits != 0,
                       .format = format,
                       .read = read_back_coefficients,
                       .lengthen_words = [&image] { return lengthen_gain_words(image); }});
}

// --- the current result ---

bool is_iir_result() {
  return !is_fir_result() && RealizationForm{design_record.realization} != RealizationForm::nonlinear;
}

/// The result as it runs. `taps` receives those of a FIR filter.
struct CurrentSystem {
  Domain domain = Domain::z;
  InputOption option = InputOption::ratio;
  SystemEntry entry;
};
std::optional<CurrentSystem> running_system(std::unique_ptr<FirEntry> &taps) {
  const DesignRecord &r = design_record;
  if (is_fir_result()) {
    const std::span all = std::span(r.fir.coeff).first(static_cast<std::size_t>(r.fir.length));
    const bool lattice = r.fir.fir_type == code(FirSymmetry::lattice);
    const InputOption option = lattice ? InputOption::lattice_fir : entered_option(all);
    taps = std::make_unique<FirEntry>();
    enter_taps(all, option, *taps);
    taps->sample_rate = r.fir.sample_rate;
    taps->gain = r.fir.gain;
    return CurrentSystem{Domain::z, option, taps.get()};
  }
  const auto option = option_of_form(static_cast<RealizationForm>(r.realization));
  if (!option) return std::nullopt;
  return CurrentSystem{Domain::z, *option, form_entry(r.z_quantized, *option)};
}

/// The result in the form and domain that a system analysis file is to hold.
std::optional<CurrentSystem> system_to_save(std::unique_ptr<FirEntry> &taps) {
  const DesignRecord &r = design_record;
  const DesignState &chosen = r.selections;
  const bool digital = chosen.DesignOrAnalysisType == code(DesignMethod::z_analysis);
  if (!digital && chosen.DesignOrAnalysisType != code(DesignMethod::s_analysis)) return running_system(taps);
  const auto option = static_cast<InputOption>(digital ? chosen.z_input_option : chosen.s_input_option);
  if (!r.quantization.quant && !chosen.SDomainAnalysisMaximumGainOption)
    return CurrentSystem{digital ? Domain::z : Domain::s, option,
                         system_entry(digital ? z_entries : s_entries, option)};
  if (!digital && !is_iir_result()) return CurrentSystem{Domain::s, option, form_entry(r.s_unnormalized, option)};
  // Poles and zeros are no realization, but of a filter that is not quantized they are the filter.
  if (option == InputOption::pole_zero && digital && !r.quantization.quant)
    return CurrentSystem{Domain::z, option, &r.z_quantized.pole_zero};
  return running_system(taps);
}

/// The first form of the current IIR result, beside the one it runs in, that `holds` finds a file for.
std::string other_realization(const std::function<bool(RealizationForm)> &holds) {
  for (const RealizationForm form : {RealizationForm::cascade, RealizationForm::parallel, RealizationForm::lattice,
                                     RealizationForm::ladder_1, RealizationForm::ladder_2, RealizationForm::ratio}) {
    if (code(form) == design_record.realization || !holds(form)) continue;
    const RealizationRow &row = realization_forms[static_cast<std::size_t>(code(form))];
    const std::string_view name = realization_names[static_cast<std::size_t>(row.report_code)];
    return formatf("; the realization \"%.*s\" would do", static_cast<int>(name.size()), name.data());
  }
  return "";
}

std::optional<SavedFilter> told(SavingOutcome outcome, const std::function<bool(RealizationForm)> &holds) {
  if (auto *saved = std::get_if<SavedFilter>(&outcome)) return std::move(*saved);
  const auto &[number, reason] = std::get<SavingRefusal>(outcome);
  const bool lost = number == Message::file_loses_filter;
  post_message(number, reason + (lost && is_iir_result() ? other_realization(holds) : ""));
  return std::nullopt;
}

bool has_no_result() {
  if (!design_record.valid) post_message(Message::no_design);
  return !design_record.valid;
}

std::optional<SavedFilter> without_form(std::string_view why) {
  post_message(Message::unsupported_form, why);
  return std::nullopt;
}

Status write_design(const std::string &path, bool of_its_kind, Message otherwise, std::string *note) {
  if (design_record.valid && !of_its_kind) {
    post_message(otherwise);
    return form_not_supported;
  }
  const auto saved = save_current_coefficients();
  if (!saved) return form_not_supported;
  if (note) *note = saved->note;
  std::string why;
  if (save_file(path, saved->text, why)) return success;
  post_message(Message::cannot_create_file, why);
  return cannot_create;
}

} // namespace

SavingOutcome save_system(Domain domain, InputOption option, SystemEntry entry, int frequency_mode, int digits) {
  const bool with_ten = option == InputOption::pole_zero || is_fir_option(code(option));
  const auto format = [=](FileDigits wanted) {
    return format_system_file(domain, option, entry, frequency_mode, {wanted.reals, wanted.rate});
  };
  return save(filter_of(domain, option, entry), {.name = "system analysis file",
                                                 .stated_digits = digits     ? digits
                                                                  : with_ten ? 10
                                                                             : 9,
                                                 .fixed = digits != 0,
                                                 .format = format,
                                                 .read = read_back_system,
                                                 .lengthen_words = nullptr});
}

std::optional<SavedFilter> save_current_coefficients(int digits) {
  if (has_no_result()) return std::nullopt;
  CoefficientFile image;
  std::unique_ptr<FirEntry> taps;
  const auto running = running_system(taps);
  if (!running || !image_of_design(image))
    return without_form("a coefficient file holds taps or a digital form, no analog system and no lattice of taps");
  const Filter filter = filter_of(running->domain, running->option, running->entry);
  return told(save_image(filter, std::move(image), digits), [&](RealizationForm form) {
    const InputOption option = *option_of_form(form);
    CoefficientFile other;
    if (!image_in_form(form, other)) return false;
    const Filter again = filter_of(Domain::z, option, form_entry(design_record.z_quantized, option));
    return std::holds_alternative<SavedFilter>(save_image(again, std::move(other), 0));
  });
}

std::optional<SavedFilter> save_current_system(int digits) {
  if (has_no_result()) return std::nullopt;
  std::unique_ptr<FirEntry> taps;
  const auto system = system_to_save(taps);
  if (!system) return without_form("a system analysis file holds no system of this form");
  const int mode = design_record.selections.FrequencyMode;
  return told(save_system(system->domain, system->option, system->entry, mode, digits), [&](RealizationForm form) {
    const InputOption option = *option_of_form(form);
    return form_exists(design_record.z_quantized, form) &&
           std::holds_alternative<SavedFilter>(
               save_system(Domain::z, option, form_entry(design_record.z_quantized, option), mode));
  });
}

Status write_coefficient_file(const std::string &path, std::string *note) {
  return write_design(path, true, Message::no_design, note);
}

Status write_fir_coefficient_file(const std::string &path) {
  return write_design(path, is_fir_result(), Message::needs_fir_design, nullptr);
}

Status write_iir_coefficient_file(const std::string &path) {
  return write_design(path, !is_fir_result(), Message::needs_iir_design, nullptr);
}

} // namespace brisel
