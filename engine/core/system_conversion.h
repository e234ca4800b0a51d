// system_conversion.h - a system taken from the current result or from a file, converted to another form or to the z
// domain, and handed on: as text, as file, as the entered system that is analysed next.
#pragma once

#include "engine/analysis/form_conversions.h"
#include "engine/core/design_state.h"
#include "engine/files/saved_filter.h"
#include "engine/iir/domain_conversion.h"

#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace brisel {

/// A system in one form. Some 50 kB without its taps.
struct ConvertibleSystem {
  std::string name; // where it comes from
  Domain domain = Domain::z;
  InputOption option = InputOption::ratio;
  double sample_rate = 0;   // radians per second
  IirForms iir{};           // options 0 to 6: the entry of the option counts
  std::vector<double> taps; // options 7 to 10: all taps, of a lattice its reflection coefficients
  double gain = 1;          // of the taps

  bool is_fir() const { return is_fir_option(code(option)); }
};
using SystemPointer = std::unique_ptr<ConvertibleSystem>;

/// The current result: a designed filter as it runs, quantized if it is, an entered system as it was entered. The
/// analog system of an IIR design is the one that was mapped, in radians per second. Nothing when the result is none of
/// the domain or kind.
SystemPointer current_iir_system(Domain domain);
SystemPointer current_fir_system();
/// The current FIR result as it runs.
SystemPointer current_fir_result();
/// The current IIR result as it runs, in `option`; in the s domain as above. Nothing when it has no such form.
SystemPointer current_iir_result(Domain domain, InputOption option);
/// A system analysis file, which becomes neither the current result nor an entered system. Nothing after `why`.
SystemPointer read_convertible_system(const std::string &path, std::string &why);

struct Conversion {
  ConvertibleSystem system;
  double digits = 0; // of the response that the form keeps
  double file_digits =
      0; // and that a system analysis file of it keeps; negative when it does not read back as the system
  int dropped_delay = 0; // samples that sections answer earlier than the source
  std::vector<std::string> notes;
};
/// The reason of a refusal in place of a conversion.
using ConversionOutcome = std::variant<std::unique_ptr<Conversion>, std::string>;

/// To the form of an option 0 to 6.
ConversionOutcome convert_iir_form(const ConvertibleSystem &source, InputOption target);
/// To the form of an option 7 to 10. Taps that mirror each other to 1e-9 of the largest count as symmetric or
/// antisymmetric.
ConversionOutcome convert_fir_form(const ConvertibleSystem &source, InputOption target);
/// An analog system to the z domain, in the form of an option 0 to 6.
ConversionOutcome convert_domain(const ConvertibleSystem &source, ZTransform method, MatchedPadding padding,
                                 InputOption target);

/// The system analysis file of a system, or why there is none.
SavingOutcome save_system(const ConvertibleSystem &system, int frequency_mode);
/// Its text to be looked at, also where no file can hold the system; nothing when a value is not finite.
std::optional<std::string> format_system(const ConvertibleSystem &system, int frequency_mode);
/// The digits of the response that such a file keeps, 0 to 16; negative when it would read back as another system.
double file_digits(const ConvertibleSystem &system);

/// Makes it the entered system of its option, which analyze_system() takes next.
void enter_system(const ConvertibleSystem &system);

/// Why a system that has a form is in no file of it, a sentence.
extern const char *const why_no_file;
/// Why a system has no form of the option, as the end of "there is no such form: ".
const char *why_no_form(Domain domain, InputOption option);

} // namespace brisel
