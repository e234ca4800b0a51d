#include "engine/core/system_conversion.h"

#include "engine/analysis/fir_lattice.h"
#include "engine/analysis/form_digits.h"
#include "engine/core/front_end.h"
#include "engine/core/system_analysis.h"
#include "engine/files/entered_fir.h"
#include "engine/files/system_check.h"
#include "engine/files/text_file.h"
#include "engine/fir/unfold.h"

#include <algorithm>
#include <cmath>

namespace brisel {

namespace {

constexpr double least_digits = 3; // fewer make no system
constexpr double mirror_tolerance = 1e-9;

FormOfSystem form_of(const ConvertibleSystem &system) {
  return {system.domain, system.option, &system.iir};
}

FirForm fir_form_of(const ConvertibleSystem &system) {
  return {system.taps, system.gain, system.option == InputOption::lattice_fir};
}

bool derive_all_forms(const ConvertibleSystem &source, IirForms &forms, FormReport &found) {
  forms = source.iir;
  if (source.option == InputOption::pole_zero) return derive_forms_of_pole_zero(source.domain, forms, found);
  return derive_forms(source.domain, *form_of_option(source.option), forms, found);
}

double digits_in(const FormReport &found, InputOption option) {
  const auto form = form_of_option(option);
  return form ? digits_of(found, *form) : found.pole_zero;
}

// (s^2, s, 1) in radians per sample to radians per second, monic again.
void to_radians_per_second(SectionEntry &cascade, double sample_rate) {
  const double period = two_pi / sample_rate;
  for (int i = 0; i < cascade.section_count; i++) {
    Triple &b = cascade.numerators[i], &a = cascade.denominators[i];
    for (Triple *t : {&b, &a}) {
      (*t)[0] *= period * period;
      (*t)[1] *= period;
    }
    const double lead = a[0] != 0 ? a[0] : a[1] != 0 ? a[1] : a[2];
    for (Triple *t : {&b, &a})
      for (double &c : *t) c /= lead;
  }
  cascade.sample_rate = sample_rate;
}

// True coefficients in place of stored ones, and the scale of a sum in its terms, as files have them.
void as_entered(SectionEntry &sections, double scale) {
  sections.gain *= scale;
  for (int i = 0; i < sections.section_count; i++) {
    const int shift = sections.shift[i];
    for (double &b : sections.numerators[i]) b = std::ldexp(b, shift) * scale;
    for (double &a : sections.denominators[i]) a = std::ldexp(a, shift);
  }
  sections.shift = {};
  sections.pars = 1;
}

double rate_of(const IirForms &forms, InputOption option) {
  return std::visit([](const auto *entry) { return entry->sample_rate; }, form_entry(forms, option));
}

bool is_iir_design() {
  return design_record.selections.DesignOrAnalysisType == code(DesignMethod::iir);
}
bool is_entered(Domain domain) {
  return design_record.selections.DesignOrAnalysisType ==
         code(domain == Domain::z ? DesignMethod::z_analysis : DesignMethod::s_analysis);
}

std::string digits_note(const char *what, double digits) {
  return std::string(what) + " " + digits_text(digits) + " of the response.";
}

ConversionOutcome too_few(double digits) {
  return "the form would keep " + digits_text(digits) + " of the response";
}

void enter(const ConvertibleSystem &system, FirEntry &entry) {
  clear_entered_fir(system.option, entry);
  enter_taps(system.taps, system.option, entry);
  entry.sample_rate = system.sample_rate;
  entry.gain = system.gain;
}

// What the user has to know of every finished conversion.
ConversionOutcome finished(std::unique_ptr<Conversion> made) {
  const int dropped_delay = made->dropped_delay;
  if (made->digits < least_digits) return too_few(made->digits);
  if (dropped_delay != 0)
    made->notes.push_back(formatf("The sections cannot hold the system's delay: they answer %d sample%s earlier.",
                                  dropped_delay, dropped_delay == 1 ? "" : "s"));
  made->file_digits = file_digits(made->system);
  if (made->file_digits < 0)
    made->notes.push_back(why_no_file);
  else
    made->notes.push_back(digits_note("A system analysis file of it keeps", made->file_digits));
  return made;
}

} // namespace

const char *const why_no_file =
    "A system analysis file cannot hold this form: leading coefficients or an order of 1 of "
    "a ladder, an order above 160 of a ratio, or more than 16 digits do not come back from "
    "it.";

SystemPointer current_iir_system(Domain domain) {
  if (!design_record.valid || is_fir_result()) return nullptr;
  const DesignState &selections = design_record.selections;
  if (!is_entered(domain)) {
    const auto form = option_of_form(RealizationForm{design_record.realization});
    return domain == Domain::s ? current_iir_result(Domain::s, InputOption::product)
           : form              ? current_iir_result(Domain::z, *form)
                               : nullptr;
  }
  auto system = std::make_unique<ConvertibleSystem>();
  system->name = "Entered system";
  system->domain = domain;
  system->option = InputOption{domain == Domain::z ? selections.z_input_option : selections.s_input_option};
  copy_entry(domain == Domain::z ? z_entries : s_entries, system->option, system->iir);
  system->sample_rate = rate_of(system->iir, system->option);
  return system;
}

SystemPointer current_iir_result(Domain domain, InputOption option) {
  if (!design_record.valid || is_fir_result() || option > InputOption::lattice) return nullptr;
  auto system = std::make_unique<ConvertibleSystem>();
  system->domain = domain;
  if (domain == Domain::s) {
    if (is_entered(Domain::z)) return nullptr;
    if (is_iir_design()) {
      system->name = "Analog filter of the design";
      system->option = InputOption::product;
      system->sample_rate = design_record.s_unnormalized.cascade.sample_rate;
      system->iir.cascade = design_record.s_unnormalized.cascade;
      to_radians_per_second(system->iir.cascade, system->sample_rate);
    } else {
      system = current_iir_system(Domain::s);
    }
    if (option == system->option) return system;
    auto converted = convert_iir_form(*system, option);
    auto *made = std::get_if<std::unique_ptr<Conversion>>(&converted);
    return made ? std::make_unique<ConvertibleSystem>(std::move((*made)->system)) : nullptr;
  }
  const auto runs_as = option_of_form(RealizationForm{design_record.realization});
  if (!runs_as) return nullptr; // analog only
  system->name = is_iir_design() ? "IIR design" : "Digital form of the entered system";
  if (design_record.quantization.quant)
    system->name += formatf(", quantized to %d bits", design_record.quantization.ibit);
  system->iir = design_record.z_quantized;
  as_entered(system->iir.cascade, 1);
  as_entered(system->iir.parallel, system->iir.parallel.pars);
  system->option = option;
  system->sample_rate = rate_of(system->iir, option);
  const auto form = form_of_option(option);
  const IirForms &forms = design_record.z_quantized;
  const bool exists = form ? form_exists(forms, *form) : forms.pole_zero.gain != 0;
  return exists ? std::move(system) : nullptr;
}

namespace {

SystemPointer fir_system(const FirEntry &fir, std::string name) {
  auto system = std::make_unique<ConvertibleSystem>();
  system->name = std::move(name);
  system->taps.assign(fir.coeff.begin(), fir.coeff.begin() + fir.length);
  system->option = fir.fir_type == code(FirSymmetry::lattice) ? InputOption::lattice_fir : entered_option(system->taps);
  system->sample_rate = fir.sample_rate;
  system->gain = fir.gain;
  return system;
}

} // namespace

SystemPointer current_fir_system() {
  if (!design_record.valid || !is_fir_result()) return nullptr;
  if (!is_entered(Domain::z)) return current_fir_result();
  auto system = fir_system(design_record.fir_unquantized, "Entered system");
  system->option = InputOption{design_record.selections.z_input_option};
  return system;
}

SystemPointer current_fir_result() {
  if (!design_record.valid || !is_fir_result()) return nullptr;
  std::string name = is_entered(Domain::z) ? "Entered system" : "FIR design";
  if (design_record.quantization.quant) name += formatf(", quantized to %d bits", design_record.quantization.ibit);
  return fir_system(design_record.fir, std::move(name));
}

namespace {

// A reader's view of a text that holds a system.
struct Scratch {
  DesignState state{};
  SystemEntries z{}, s{};
  SystemReading reading{};
};

SystemPointer take(const Scratch &scratch) {
  const SystemReading &reading = scratch.reading;
  const SystemEntries &entries = reading.domain == Domain::z ? scratch.z : scratch.s;
  auto system = std::make_unique<ConvertibleSystem>();
  system->domain = reading.domain;
  system->option = reading.option;
  system->sample_rate =
      std::visit([](const auto *entry) { return entry->sample_rate; }, system_entry(entries, reading.option));
  if (!system->is_fir()) {
    copy_entry(entries, reading.option, system->iir);
    return system;
  }
  const FirEntry &fir = *std::get<const FirEntry *>(system_entry(entries, reading.option));
  const auto whole = std::make_unique<FirEntry>();
  fir_entry_unfold(fir, *whole);
  system->taps.assign(whole->coeff.begin(), whole->coeff.begin() + whole->length);
  system->gain = fir.gain;
  return system;
}

} // namespace

SystemPointer read_convertible_system(const std::string &path, std::string &why) {
  const auto scratch = std::make_unique<Scratch>();
  const int result = read_system_file(path, scratch->state, scratch->z, scratch->s, &scratch->reading);
  const SystemReading &reading = scratch->reading;
  if (result != success) {
    why = reading.line > 0 ? formatf("%s:%d: %s", path.c_str(), reading.line, reading.reason.c_str())
                           : path + ": " + reading.reason;
    return nullptr;
  }
  const SystemEntries &entries = reading.domain == Domain::z ? scratch->z : scratch->s;
  if (const auto complaint = check_system(reading.domain, reading.option, system_entry(entries, reading.option))) {
    why = path + ": " + complaint->reason;
    return nullptr;
  }
  auto system = take(*scratch);
  system->name = path;
  return system;
}

ConversionOutcome convert_iir_form(const ConvertibleSystem &source, InputOption target) {
  const auto forms = std::make_unique<IirForms>();
  FormReport found{};
  if (!derive_all_forms(source, *forms, found)) return std::string("the source is no system that has other forms");
  if (digits_in(found, target) < 0) return std::string(why_no_form(source.domain, target));
  auto made = std::make_unique<Conversion>();
  made->system.name = source.name;
  made->system.domain = source.domain;
  made->system.option = target;
  made->system.sample_rate = source.sample_rate;
  made->system.iir = *forms;
  const bool earlier = target != source.option && (target == InputOption::product || target == InputOption::sum);
  if (earlier) made->dropped_delay = found.dropped_delay;
  made->digits = form_digits_kept(form_of(source), form_of(made->system), made->dropped_delay);
  return finished(std::move(made));
}

ConversionOutcome convert_fir_form(const ConvertibleSystem &source, InputOption target) {
  auto made = std::make_unique<Conversion>();
  ConvertibleSystem &result = made->system;
  result.name = source.name;
  result.option = target;
  result.sample_rate = source.sample_rate;
  result.gain = source.gain;
  const bool from_lattice = source.option == InputOption::lattice_fir;
  if (from_lattice && target != InputOption::lattice_fir && source.taps.size() >= std::size_t{max_taps})
    return formatf("the taps would be more than %d", max_taps);
  result.taps = from_lattice ? lattice_fir_taps(source.taps) : source.taps;
  switch (target) {
  case InputOption::symmetric_fir:
  case InputOption::antisymmetric_fir: {
    const bool even = target == InputOption::symmetric_fir;
    int worst = 0;
    const std::vector<double> taps = std::move(result.taps);
    result.taps = mirrored_taps(taps, even ? 1 : -1, mirror_tolerance, worst);
    if (result.taps.empty())
      return formatf("the filter is not %s: tap %d is %.9g and its mirror image %.9g",
                     even ? "symmetric" : "antisymmetric", worst, taps[static_cast<std::size_t>(worst)],
                     taps[taps.size() - 1 - static_cast<std::size_t>(worst)]);
    break;
  }
  case InputOption::lattice_fir: {
    if (from_lattice) {
      result.taps = source.taps;
      break;
    }
    FirLattice lattice = fir_lattice(source.taps, source.gain);
    if (lattice.fault == LatticeFault::first_tap_zero)
      return std::string("the first tap is 0, and that of a lattice never is");
    if (lattice.fault == LatticeFault::unit_reflection)
      return formatf("reflection coefficient %d is 1 or -1, as the last one of every linear-phase filter is: such a "
                     "filter has no lattice",
                     lattice.stage);
    if (lattice.reflection.empty()) return std::string("a single tap has no reflection coefficient");
    result.taps = std::move(lattice.reflection);
    result.gain = lattice.gain;
    break;
  }
  default:
    break;
  }
  made->digits = fir_digits_kept(fir_form_of(source), fir_form_of(result));
  return finished(std::move(made));
}

ConversionOutcome convert_domain(const ConvertibleSystem &source, ZTransform method, MatchedPadding padding,
                                 InputOption target) {
  if (source.domain != Domain::s) return std::string("the source is a system of the z domain");
  const auto analog = std::make_unique<IirForms>();
  FormReport found{};
  if (!derive_all_forms(source, *analog, found)) return std::string("the source is no system that can be mapped");
  auto made = std::make_unique<Conversion>();
  DomainConversion mapped =
      to_z_domain(method, padding, {Domain::s, source.option, analog.get()}, found, target, made->system.iir);
  if (!mapped.refusal.empty()) return std::move(mapped.refusal);
  if (mapped.digits < 0) return std::string(why_no_form(Domain::z, target));
  made->system.name = source.name;
  made->system.domain = Domain::z;
  made->system.option = target;
  made->system.sample_rate = source.sample_rate;
  made->digits = mapped.digits;
  made->dropped_delay = mapped.dropped_delay;
  if (!mapped.stable)
    made->notes.push_back("The digital system is unstable: it has poles on or outside the unit circle.");
  made->notes.push_back(formatf(
      "Its magnitude differs from the analog one by at most %.3g of the analog peak, at %.6g %s.", mapped.deviation,
      mapped.deviation_at * design_state.unit_factor_inverse, design_state.FrequencyMode ? "rad/s" : "Hz"));
  return finished(std::move(made));
}

SavingOutcome save_system(const ConvertibleSystem &system, int frequency_mode) {
  if (!system.is_fir())
    return save_system(system.domain, system.option, form_entry(system.iir, system.option), frequency_mode);
  const auto entry = std::make_unique<FirEntry>();
  enter(system, *entry);
  return save_system(Domain::z, system.option, entry.get(), frequency_mode);
}

std::optional<std::string> format_system(const ConvertibleSystem &system, int frequency_mode) {
  SavingOutcome outcome = save_system(system, frequency_mode);
  if (auto *saved = std::get_if<SavedFilter>(&outcome)) return std::move(saved->text);
  if (!system.is_fir())
    return format_system_file(system.domain, system.option, form_entry(system.iir, system.option), frequency_mode);
  const auto entry = std::make_unique<FirEntry>();
  enter(system, *entry);
  return format_system_file(Domain::z, system.option, entry.get(), frequency_mode);
}

double file_digits(const ConvertibleSystem &system) {
  constexpr int radians = 1; // coefficients do not depend on the unit
  const SavingOutcome outcome = save_system(system, radians);
  const auto *saved = std::get_if<SavedFilter>(&outcome);
  const auto scratch = std::make_unique<Scratch>();
  scratch->reading.complains = false;
  if (!saved || read_system_text(saved->text, scratch->state, scratch->z, scratch->s, &scratch->reading) != success)
    return -1;
  const auto again = take(*scratch);
  const double digits = system.is_fir() ? fir_digits_kept(fir_form_of(system), fir_form_of(*again))
                                        : form_digits_kept(form_of(system), form_of(*again), 0);
  return std::max(digits, 0.0);
}

void enter_system(const ConvertibleSystem &system) {
  const bool digital = system.domain == Domain::z;
  design_state.prewarp_frequency = 0; // belonged to the system before
  SystemEntries &entries = digital ? z_entries : s_entries;
  design_state.DesignOrAnalysisType = code(digital ? DesignMethod::z_analysis : DesignMethod::s_analysis);
  (digital ? design_state.z_input_option : design_state.s_input_option) = code(system.option);
  const IirForms &iir = system.iir;
  switch (system.option) {
  case InputOption::ratio:
    entries.ratio = iir.ratio;
    break;
  case InputOption::pole_zero:
    entries.pole_zero = iir.pole_zero;
    break;
  case InputOption::product:
    entries.product = iir.cascade;
    break;
  case InputOption::sum:
    entries.sum = iir.parallel;
    break;
  case InputOption::ladder_1:
    entries.ladder_1 = iir.ladder_1;
    break;
  case InputOption::ladder_2:
    entries.ladder_2 = iir.ladder_2;
    break;
  case InputOption::lattice:
    entries.lattice = iir.lattice;
    break;
  default:
    enter(system, entries.fir[static_cast<std::size_t>(code(system.option) - code(InputOption::symmetric_fir))]);
  }
}

const char *why_no_form(Domain domain, InputOption option) {
  switch (option) {
  case InputOption::ratio:
    return "the order of the polynomials is above 200, or the system answers before its input";
  case InputOption::pole_zero:
    return "there are more than 200 poles or zeros";
  case InputOption::product:
    return "its poles and zeros could not be found, or there are more than 200";
  case InputOption::sum:
    return "a sum of sections needs at least as many poles as zeros, and poles apart from each other";
  case InputOption::lattice:
    return domain == Domain::z ? "a reflection coefficient is 1 or -1: poles lie on the unit circle, or at places that "
                                 "mirror each other in it"
                               : "a reflection coefficient of the descending coefficients is 1 or -1";
  default:
    return "its continued fraction ends early";
  }
}

} // namespace brisel
