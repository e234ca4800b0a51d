#include "engine/files/system_check.h"

#include "engine/core/spec_check.h"
#include "engine/files/entered_fir.h"
#include "engine/files/text_file.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace brisel {

namespace {

using Complaint = std::optional<SystemComplaint>;

const char *const higher_order = "the numerator has a higher order than the denominator";
const char *const answers_early = "the numerator has a higher order than the denominator: the system would answer "
                                  "before its input";
const char *const more_zeros = "there are more zeros than poles";

bool all_finite(std::span<const double> values) {
  return std::ranges::all_of(values, [](double value) { return std::isfinite(value); });
}

/// Places of zeros in front of the first coefficient; all of them when there is no other.
int leading_zeros(std::span<const double> values) {
  return static_cast<int>(std::ranges::find_if(values, [](double value) { return value != 0; }) - values.begin());
}

struct Checker {
  Domain domain;
  InputOption option;

  Complaint complain(SystemPart part, std::string reason) const { return SystemComplaint{part, std::move(reason)}; }
  Complaint list_of_numbers(SystemPart part, std::span<const double> values) const {
    return all_finite(values) ? std::nullopt : complain(part, "a value is not finite");
  }

  Complaint operator()(const RatioEntry *entry) const {
    const auto numerator = std::span(entry->numerator).first(entry->numerator_order + 1);
    const auto denominator = std::span(entry->denominator).first(entry->denominator_order + 1);
    if (const auto wrong = list_of_numbers(SystemPart::first_list, numerator)) return wrong;
    if (const auto wrong = list_of_numbers(SystemPart::second_list, denominator)) return wrong;
    const int above = leading_zeros(numerator), below = leading_zeros(denominator);
    if (above > entry->numerator_order) return complain(SystemPart::first_list, "the numerator is 0");
    if (below > entry->denominator_order) return complain(SystemPart::second_list, "the denominator is 0");
    // Powers of z^-1 begin at the same one, powers of s end there.
    const bool improper =
        domain == Domain::z ? above < below : entry->numerator_order - above > entry->denominator_order - below;
    if (improper) return complain(SystemPart::first_list, domain == Domain::z ? answers_early : higher_order);
    return std::nullopt;
  }

  Complaint places(SystemPart part, std::span<const std::complex<double>> values) const {
    const char *const name = part == SystemPart::first_list ? "zero" : "pole";
    for (const auto &value : values)
      if (!std::isfinite(value.real()) || !std::isfinite(value.imag()))
        return complain(part, formatf("a %s is not finite", name));
    std::vector<std::complex<double>> pairs(values.begin(), values.end());
    if (!arrange_pairs(pairs)) return complain(part, formatf("a complex %s has no conjugate", name));
    return std::nullopt;
  }
  Complaint operator()(const PoleZeroEntry *entry) const {
    const int zeros = entry->real_zeros + entry->complex_zeros, poles = entry->real_poles + entry->complex_poles;
    if (const auto wrong = places(SystemPart::first_list, std::span(entry->zeros).first(zeros))) return wrong;
    if (const auto wrong = places(SystemPart::second_list, std::span(entry->poles).first(poles))) return wrong;
    if (zeros > poles) return complain(SystemPart::first_list, more_zeros);
    return std::nullopt;
  }

  Complaint operator()(const SectionEntry *entry) const {
    const bool product = option == InputOption::product;
    int surplus = 0; // of zeros
    for (int i = 0; i < entry->section_count; i++) {
      const Triple &numerator = entry->numerators[i], &denominator = entry->denominators[i];
      const auto section = [&](const char *reason) {
        return complain(SystemPart::first_list, formatf("section %d: %s", i + 1, reason));
      };
      if (!all_finite(numerator) || !all_finite(denominator)) return section("a coefficient is not finite");
      const int above = leading_zeros(numerator), below = leading_zeros(denominator);
      if (below == 3) return section("the denominator is 0");
      if (product && above == 3) return section("the numerator is 0");
      if (!product && above < below) return section(domain == Domain::z ? answers_early : higher_order);
      surplus += below - above;
    }
    if (entry->section_count == 0) return complain(SystemPart::first_list, "there are no sections");
    if (product && surplus > 0) return complain(SystemPart::first_list, more_zeros);
    return std::nullopt;
  }

  Complaint operator()(const LadderEntry *entry) const {
    return list_of_numbers(SystemPart::first_list, std::span(entry->alpha).first(entry->alpha_count));
  }

  Complaint operator()(const LatticeEntry *entry) const {
    const auto gammas = std::span(entry->gamma).first(entry->order + entry->lead + 1);
    if (const auto wrong = list_of_numbers(SystemPart::first_list, gammas)) return wrong;
    if (leading_zeros(gammas) == static_cast<int>(gammas.size()))
      return complain(SystemPart::first_list, "every gamma coefficient is 0");
    return list_of_numbers(SystemPart::second_list, std::span(entry->kappa).subspan(1, entry->order));
  }

  Complaint operator()(const FirEntry *entry) const {
    const auto taps = std::span(entry->coeff).first(is_half_response(option) ? entry->unique_count : entry->length);
    if (taps.empty()) return complain(SystemPart::first_list, "there are no taps");
    if (const auto wrong = list_of_numbers(SystemPart::first_list, taps)) return wrong;
    // A lattice has a direct path beside its coefficients.
    if (option != InputOption::lattice_fir && leading_zeros(taps) == static_cast<int>(taps.size()))
      return complain(SystemPart::first_list, "every tap is 0");
    if (option == InputOption::antisymmetric_fir && entry->length % 2 && taps[0] != 0)
      return complain(SystemPart::first_list, "the tap in the middle of an antisymmetric filter must be 0");
    return std::nullopt;
  }
};

} // namespace

std::optional<SystemComplaint> check_system(Domain domain, InputOption option, SystemEntry entry) {
  const Checker checker{domain, option};
  const auto [rate, gain] =
      std::visit([](const auto *system) { return std::pair(system->sample_rate, system->gain); }, entry);
  if (!(rate > 0)) return checker.complain(SystemPart::sampling_frequency, "is not above zero");
  if (!(rate >= min_sampling_frequency && rate <= max_sampling_frequency))
    return checker.complain(SystemPart::sampling_frequency, "is beyond all limits");
  if (!std::isfinite(gain)) return checker.complain(SystemPart::gain, "is not finite");
  // The gain of a sum is the path around its sections and may be nothing.
  if (gain == 0 && option != InputOption::sum) return checker.complain(SystemPart::gain, "is 0, and so is the system");
  return std::visit(checker, entry);
}

} // namespace brisel
