// fuzz_forms.cpp - conversions between the forms of a system and from the s domain to the z domain: a form that exists
// has finite coefficients, and one that keeps digits has the response of the form it came from.
#include "engine/analysis/form_conversions.h"
#include "engine/analysis/form_digits.h"
#include "engine/core/system_conversion.h"
#include "engine/files/system_file.h"
#include "fuzz/check.h"
#include "fuzz/filled_record.h"

#include <memory>

using namespace brisel;

namespace {

void check_sections(const SectionEntry &entry) {
  require(entry.section_count <= max_sections && std::isfinite(entry.gain) && std::isfinite(entry.pars), "sections");
  for (std::size_t i = 0; i < static_cast<std::size_t>(entry.section_count); i++)
    require(all_finite(entry.numerators[i]) && all_finite(entry.denominators[i]), "finite sections");
}

void check_forms(const IirForms &forms, const FormReport &found) {
  for (const double digits :
       {found.cascade, found.parallel, found.pole_zero, found.ratio, found.lattice, found.ladder_1, found.ladder_2})
    require(digits >= -1 && digits <= 17, "a number of digits");
  if (found.cascade >= 0) check_sections(forms.cascade);
  if (found.parallel >= 0) check_sections(forms.parallel);
  if (found.ratio >= 0)
    require(all_finite(forms.ratio.numerator) && all_finite(forms.ratio.denominator), "a finite ratio");
  if (found.lattice >= 0)
    require(all_finite(forms.lattice.kappa) && all_finite(forms.lattice.gamma), "a finite lattice");
  if (found.ladder_1 >= 0) require(all_finite(forms.ladder_1.alpha), "a finite ladder");
  if (found.ladder_2 >= 0) require(all_finite(forms.ladder_2.alpha), "a finite ladder");
  if (found.pole_zero < 0) return;
  const PoleZeroEntry &roots = forms.pole_zero;
  require(roots.real_poles + roots.complex_poles <= max_order && roots.real_zeros + roots.complex_zeros <= max_order,
          "the number of roots");
  for (int i = 0; i < roots.real_poles + roots.complex_poles; i++)
    require(std::isfinite(std::abs(roots.poles[static_cast<std::size_t>(i)])), "finite poles");
  for (int i = 0; i < roots.real_zeros + roots.complex_zeros; i++)
    require(std::isfinite(std::abs(roots.zeros[static_cast<std::size_t>(i)])), "finite zeros");
}

/// Forms that keep their digits where the engine compares them do so in between, too.
void check_response(Domain domain, const IirForms &forms, const FormReport &found) {
  constexpr double angle = 0.7312;
  if (found.cascade < 12 || found.ratio < 12 || found.pole_zero < 0) return;
  const PoleZeroEntry &roots = forms.pole_zero;
  const auto poles = std::span(roots.poles).first(static_cast<std::size_t>(roots.real_poles + roots.complex_poles));
  double largest = 0;
  for (const auto &value : cascade_values(forms.cascade, comparison_points(domain, poles)))
    largest = std::max(largest, std::abs(value));
  const bool digital = domain == Domain::z;
  const std::complex<double> place[] = {digital ? std::polar(1.0, angle) : std::complex(0.0, angle)};
  const auto delay = digital ? std::polar(1.0, -angle * found.dropped_delay) : 1.0;
  const auto cascade = cascade_values<long double>(forms.cascade, place)[0] * delay;
  const auto ratio = ratio_values<long double>(domain, forms.ratio, place)[0];
  const double size = std::max({largest, std::abs(cascade), std::abs(ratio)});
  if (std::isfinite(size)) require(std::abs(cascade - ratio) <= 1e-6 * size, "the same response");
}

/// What the conversion dialogs do with an entered system: a system whose numbers a file can hold, or a reason.
void check_conversion(ByteSource &in, const ConvertibleSystem &source) {
  const InputOption target{static_cast<std::int8_t>(in.below(7))};
  const ZTransform map{static_cast<std::int8_t>(in.below(3))};
  const MatchedPadding padding{in.below(3)};
  const ConversionOutcome outcome =
      source.domain == Domain::s ? convert_domain(source, map, padding, target) : convert_iir_form(source, target);
  if (const auto *reason = std::get_if<std::string>(&outcome)) return require(!reason->empty(), "a reason");
  const Conversion &made = *std::get<std::unique_ptr<Conversion>>(outcome);
  require(made.system.domain == Domain::z && made.system.option == target, "the form asked for");
  require(made.digits >= 3 && made.digits <= 17 && made.file_digits <= 17, "a number of digits");
  if (made.file_digits >= 0) require(format_system(made.system, 0).has_value(), "a file can hold the result");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  static const auto forms = std::make_unique<IirForms>();
  ByteSource in(data, size);
  const Domain domain = in.byte() % 2 ? Domain::s : Domain::z;
  const RealizationForm source{static_cast<std::int8_t>(in.below(6))};
  fill_form(in, source, in.byte() < 240 ? 6 : 20, *forms);
  static const auto system = std::make_unique<ConvertibleSystem>();
  system->domain = domain;
  system->option = *option_of_form(source);
  system->iir = *forms;
  check_conversion(in, *system);
  FormReport found{};
  if (!derive_forms(domain, source, *forms, found)) return 0;
  check_forms(*forms, found);
  check_response(domain, *forms, found);
  if (domain == Domain::z)
    for (int form = 0; form < 6; form++)
      if (form_exists(*forms, RealizationForm{static_cast<std::int8_t>(form)}))
        is_stable(*forms, RealizationForm{static_cast<std::int8_t>(form)});
  return 0;
}
