#include "engine/files/system_file.h"

#include "engine/core/front_end.h"
#include "engine/core/spec_check.h"
#include "engine/core/trace.h"
#include "engine/files/entered_fir.h"
#include "engine/files/fixed_columns.h"
#include "engine/files/system_lists.h"
#include "engine/files/text_file.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace brisel {

namespace {

constexpr std::size_t line_capacity = 120;
constexpr std::string_view z_header = "DIGITAL SYSTEM ANALYSIS - Z DOMAIN INPUT";
constexpr std::string_view s_header = "DIGITAL SYSTEM ANALYSIS - S DOMAIN INPUT";
constexpr std::string_view option_label = "INPUT OPTION - ";
constexpr const char *sampling_label = "SAMPLING FREQUENCY          ";
constexpr std::size_t sampling_column = 27, unit_column = 41;
constexpr const char *gain_label = "INITIAL GAIN ";
constexpr std::size_t gain_column = 13, fir_gain_column = 27, fir_value_column = 11;
constexpr int values_per_line = 5;
constexpr int stated_rate_digits = 6;
constexpr std::size_t longest_number = 24; // "-1.234567890123456e-123" and a digit to spare
constexpr int most_ratio_values = max_ratio_order + 1;

/// A line with a count: what the writer puts before it, the column where the reader looks, and what it accepts.
struct CountLine {
  const char *label;
  std::size_t column;
  int width;
  long long lowest, highest;
};
// The ratio's counts have no upper bound of their own: surplus coefficients are left where they stand.
constexpr CountLine numerator_count{"NUMERATOR COEFFICIENTS   - HIGHEST ORDER FIRST", 46, 5, 1, 1LL << 40};
constexpr CountLine denominator_count{"DENOMINATOR COEFFICIENTS - HIGHEST ORDER FIRST", 46, 5, 1, 1LL << 40};
constexpr CountLine zero_count{"ZEROES OF TRANSFER FUNCTION H(s) ", 33, 5, 0, max_order};
constexpr CountLine pole_count{"POLES OF TRANSFER FUNCTION H(s)  ", 33, 5, 0, max_order};
constexpr CountLine section_count{"NUMBER OF SECTIONS ", 19, 3, 1, max_sections};
constexpr CountLine lead_count{"NUMBER OF LEADING ZEROS ", 19, 3, 0, max_lead};
constexpr CountLine ladder_order{"ORDER OF LADDER ", 16, 3, 2, max_order};
constexpr CountLine lattice_order{"ORDER OF LATTICE ", 17, 3, min_lattice_order, max_order};
constexpr CountLine tap_count{"NUMBER OF TAPS ", 15, 5, 1, max_taps};
constexpr const char *section_numerators = "NUMERATOR COEFFICIENTS ";
constexpr const char *section_denominators = "DENOMINATOR COEFFICIENTS";
constexpr const char *ladder_values = "LADDER COEFFICIENTS";
constexpr const char *gamma_values = "LATTICE GAMMA COEFFICIENTS";
constexpr const char *kappa_values = "LATTICE KAPPA COEFFICIENTS";

template <class Entries> auto &fir_entry(Entries &entries, InputOption option) {
  return entries.fir[code(option) - code(InputOption::symmetric_fir)];
}

// --- reader ---

struct Reader {
  LineReader lines{line_capacity};
  SystemReading &reading;
  double sample_rate = 0;
  int frequency_mode = 0;
  int status = 0;
  bool behind_header = false;

  bool fail(int result, std::string reason) {
    status = result;
    reading.line = lines.line_number();
    reading.last_line = lines.line();
    reading.reason = std::move(reason);
    return false;
  }
  bool next(int result, const char *expected) {
    if (lines.next()) return true;
    return fail(result, lines.too_long() ? formatf("the line is longer than %zu characters", line_capacity - 2)
                                         : formatf("the file ends where %s was expected", expected));
  }

  bool number(int result, std::size_t column, double &value, std::size_t *end = nullptr) {
    const auto read = column_number(lines.line(), column, end);
    if (!read) return fail(result, formatf("no number at column %zu", column + 1));
    value = *read;
    return true;
  }
  /// Numbers one behind the other, from the start of the line just read. Words may follow them; another number would be
  /// lost and is refused unless `surplus` says that it may be there.
  bool numbers(int result, std::span<double> values, bool surplus = false) {
    std::size_t column = 0;
    for (double &value : values)
      if (!number(result, column, value, &column)) return false;
    if (!surplus && column_number(lines.line(), column)) return fail(result, "more numbers than expected");
    return true;
  }
  /// Long numbers stand fewer on a line where another one would not have fitted; the list goes on in the next line.
  int numbers_in_line() {
    std::size_t column = 0;
    int found = 0;
    while (column_number(lines.line(), column, &column)) found++;
    return found > 0 && lines.line().size() + 1 + longest_number > line_capacity - 2 ? found : values_per_line;
  }
  bool count(const CountLine &line, int &value) {
    if (!next(1, line.label)) return false;
    const auto read = column_integer(lines.line(), line.column);
    if (!read) return fail(1, formatf("no count at column %zu", line.column + 1));
    if (*read < line.lowest || *read > line.highest)
      return fail(1, formatf("the count %lld is not %lld to %lld", *read, line.lowest, line.highest));
    value = static_cast<int>(std::min(*read, 1LL << 30));
    return true;
  }
  /// Kept: the column of the lead count lies inside the label that the system itself writes. A line that holds no
  /// number there has a lead of 0, so that the system's own ladder and lattice files come back without their lead.
  bool lead(int &value) {
    value = 0;
    if (!next(1, lead_count.label)) return false;
    const std::string_view line = lines.line();
    if (line.size() <= lead_count.column) return fail(1, formatf("no count at column %zu", lead_count.column + 1));
    if (!parse_number(line.substr(lead_count.column))) return true;
    const auto read = column_integer(line, lead_count.column);
    if (!read || *read < lead_count.lowest || *read > lead_count.highest)
      return fail(1, formatf("the lead count is not %lld to %lld", lead_count.lowest, lead_count.highest));
    value = static_cast<int>(*read);
    return true;
  }
  bool gain(double &value) { return next(1, gain_label) && number(1, gain_column, value); }
  /// One value a line.
  bool column_of(int result, std::span<double> values) {
    for (double &value : values)
      if (!next(result, "a value") || !numbers(result, {&value, 1})) return false;
    return true;
  }

  template <class Entry> void start(Entry &entry) {
    entry = {};
    entry.sample_rate = sample_rate;
  }

  bool ratio_list(const CountLine &line, int result, std::span<double> values, std::int16_t &order) {
    int wanted = 0;
    if (!count(line, wanted)) return false;
    // Kept: what is beyond 161 coefficients is not read here but as the lines that should follow.
    const int used = std::min(wanted, most_ratio_values);
    for (int first = 0; first < used;) {
      if (!next(result, "coefficients")) return false;
      const int most = std::min(values_per_line, used - first), here = std::min(most, numbers_in_line());
      if (!numbers(result, values.subspan(first, here), wanted > used)) return false;
      first += here;
    }
    order = static_cast<std::int16_t>(used - 1);
    return true;
  }
  bool ratio(RatioEntry &entry) {
    start(entry);
    if (!gain(entry.gain) || !ratio_list(numerator_count, 2, entry.numerator, entry.numerator_order) ||
        !ratio_list(denominator_count, 3, entry.denominator, entry.denominator_order))
      return false;
    if (reading.domain == Domain::z) align_digital_ratio(entry);
    return true;
  }

  bool places(const CountLine &line, int result, std::span<std::complex<double>> values, std::int16_t &real,
              std::int16_t &complex) {
    int wanted = 0;
    if (!count(line, wanted)) return false;
    for (int i = 0; i < wanted; i++) {
      std::array<double, 2> parts{};
      if (!next(result, "a real and an imaginary part") || !numbers(result, parts)) return false;
      values[i] = {parts[0], parts[1]};
      (parts[1] == 0 ? real : complex)++;
    }
    return true;
  }
  bool pole_zero(PoleZeroEntry &entry) {
    start(entry);
    return gain(entry.gain) && places(zero_count, 2, entry.zeros, entry.real_zeros, entry.complex_zeros) &&
           places(pole_count, 3, entry.poles, entry.real_poles, entry.complex_poles);
  }

  bool triples(int passed_over, int result, std::span<Triple> values) {
    if (!next(passed_over, "a heading")) return false;
    for (Triple &triple : values)
      if (!next(result, "three coefficients") || !numbers(result, triple)) return false;
    return true;
  }
  bool sections(SectionEntry &entry) {
    start(entry);
    entry.pars = 1;
    entry.keep_gain = 1;
    int sections = 0;
    if (!gain(entry.gain) || !count(section_count, sections)) return false;
    entry.section_count = static_cast<std::int16_t>(sections);
    if (!triples(2, 2, std::span(entry.numerators).first(sections)) ||
        !triples(3, 4, std::span(entry.denominators).first(sections)))
      return false;
    entry.order = order_of_sections(reading.domain, entry);
    return true;
  }

  bool ladder(LadderEntry &entry, std::int8_t form) {
    start(entry);
    entry.form = form;
    int lead_values = 0, order = 0;
    if (!gain(entry.gain) || !lead(lead_values) || !count(ladder_order, order) || !next(1, ladder_values)) return false;
    entry.order = static_cast<std::int16_t>(order);
    entry.lead = static_cast<std::int16_t>(lead_values);
    entry.alpha_count = static_cast<std::int16_t>(lead_values + 2 * order + 1);
    return column_of(1, std::span(entry.alpha).first(entry.alpha_count));
  }
  bool lattice(LatticeEntry &entry) {
    start(entry);
    int lead_values = 0, order = 0;
    if (!gain(entry.gain) || !lead(lead_values) || !count(lattice_order, order) || !next(1, gamma_values)) return false;
    entry.order = static_cast<std::int16_t>(order);
    entry.lead = static_cast<std::int16_t>(lead_values);
    return column_of(1, std::span(entry.gamma).first(order + lead_values + 1)) && next(1, kappa_values) &&
           column_of(1, std::span(entry.kappa).subspan(1, order));
  }

  /// A tap at its column; the sign that the system writes stands one column before it.
  bool tap(double &value) {
    if (!next(1, "a tap")) return false;
    const std::string &line = lines.line();
    const std::size_t sign = fir_value_column - 1;
    const bool signed_before = line.size() > sign && (line[sign] == '-' || line[sign] == '+');
    return number(1, signed_before ? sign : fir_value_column, value);
  }
  bool fir(FirEntry &entry, InputOption option) {
    clear_entered_fir(option, entry);
    entry.sample_rate = sample_rate;
    int length = 0;
    if (!count(tap_count, length) || !number(1, fir_gain_column, entry.gain)) return false;
    entry.length = length;
    entry.odd_length = length & 1;
    entry.unique_count = (length + 1) / 2;
    if (!is_half_response(option)) {
      for (int i = 0; i < length; i++)
        if (!tap(entry.coeff[i])) return false;
      return true;
    }
    // "-H(i) = v =  H(j)": the file lists the second half from the end, the entry holds the first half.
    const double sign = option == InputOption::antisymmetric_fir ? -1 : 1;
    for (int i = entry.unique_count - 1; i >= 0; i--) {
      double value = 0;
      if (!tap(value)) return false;
      entry.coeff[i] = value == 0 ? 0 : sign * value;
    }
    return true;
  }

  bool header() {
    if (!next(1, "DIGITAL SYSTEM ANALYSIS")) return false;
    const bool s = lines.line().starts_with(s_header);
    if (!s && !lines.line().starts_with(z_header))
      return fail(1, formatf("the file does not begin with \"%s\" or \"%s\"", z_header.data(), s_header.data()));
    reading.domain = s ? Domain::s : Domain::z;
    if (!next(1, "INPUT OPTION")) return false;
    const std::string_view name =
        std::string_view(lines.line()).substr(std::min(option_label.size(), lines.line().size()));
    const auto options = std::span(input_options).first(s ? s_option_count : z_option_count);
    const auto found = std::ranges::find_if(
        options, [&](const InputOptionRow &row) { return name.starts_with(s ? row.s_header : row.z_header); });
    if (found == options.end()) return fail(1, "this is no input option of the domain");
    reading.option = static_cast<InputOption>(found - options.begin());
    if (!next(1, "SAMPLING FREQUENCY") || !number(1, sampling_column, sample_rate)) return false;
    const std::size_t unit = lines.line().find_first_of("HRhr", std::min(unit_column, lines.line().size()));
    if (unit == std::string::npos) return fail(1, formatf("no unit at column %zu", unit_column + 1));
    // Kept: a lower-case unit means radians per second, even "hertz".
    frequency_mode = lines.line()[unit] == 'H' ? 0 : 1;
    sample_rate *= unit_row(frequency_mode).factor;
    if (!(sample_rate >= min_sampling_frequency && sample_rate <= max_sampling_frequency))
      return fail(1, "the sampling frequency is not above zero, or beyond all limits");
    return true;
  }

  bool file(SystemEntries &z, SystemEntries &s) {
    if (!header()) return false;
    behind_header = true;
    SystemEntries &entries = reading.domain == Domain::s ? s : z;
    switch (reading.option) {
    case InputOption::ratio:
      return ratio(entries.ratio);
    case InputOption::pole_zero:
      return pole_zero(entries.pole_zero);
    case InputOption::product:
      return sections(entries.product);
    case InputOption::sum:
      return sections(entries.sum);
    case InputOption::ladder_1:
      return ladder(entries.ladder_1, 0);
    case InputOption::ladder_2:
      return ladder(entries.ladder_2, 1);
    case InputOption::lattice:
      return lattice(entries.lattice);
    case InputOption::symmetric_fir:
    case InputOption::antisymmetric_fir:
    case InputOption::nonsymmetric_fir:
    case InputOption::lattice_fir:
      return fir(fir_entry(entries, reading.option), reading.option);
    }
    return false;
  }
};

int read(Reader &reader, DesignState &state, SystemEntries &z, SystemEntries &s) {
  if (!reader.file(z, s)) {
    if (reader.behind_header && reader.reading.complains)
      front_end->reader_complaint("Loading INP file error: Last line is: \n" + reader.reading.last_line + "\n");
    return reader.status;
  }
  const bool digital = reader.reading.domain == Domain::z;
  state.DesignOrAnalysisType = code(digital ? DesignMethod::z_analysis : DesignMethod::s_analysis);
  (digital ? state.z_input_option : state.s_input_option) = code(reader.reading.option);
  state.FrequencyMode = static_cast<std::uint8_t>(reader.frequency_mode);
  state.unit_factor = unit_row(reader.frequency_mode).factor;
  state.unit_factor_inverse = 1 / state.unit_factor;
  return success;
}

// --- writer ---

struct Writer {
  Domain domain;
  InputOption option;
  SystemDigits digits{};
  std::string text{};
  bool finite = true;

  double checked(double value) {
    finite = finite && std::isfinite(value);
    return value;
  }
  std::string real(double value, int stated_digits) {
    const int places = (digits.reals ? digits.reals : stated_digits) - 1;
    return formatf("% .*e", places, checked(value));
  }
  std::string coefficient(double value) { return real(value, 9); }
  std::string tap(double value) { return real(value, 10); }
  /// A line ends early where the next number would not fit the reader's buffer.
  void coefficients(std::span<const double> values, int per_line) {
    std::string line;
    int here = 0;
    for (const double value : values) {
      const std::string number = coefficient(value);
      if (here == per_line || line.size() + 1 + number.size() > line_capacity - 2) {
        text += line + "\n";
        line.clear();
        here = 0;
      }
      if (here++ > 0) line += " ";
      line += number;
    }
    text += line + "\n";
  }
  void count(const CountLine &line, int value) { appendf(text, "%s%*d\n", line.label, line.width, value); }
  void gain(double value) {
    text += gain_label;
    coefficients({&value, 1}, 1);
  }
  void heading(const char *words) { appendf(text, "%s\n", words); }

  void operator()(const RatioEntry *entry) {
    gain(entry->gain);
    const int most = std::max(entry->numerator_order, entry->denominator_order);
    const auto list = [&](const CountLine &line, std::span<const double> values, int order) {
      // Powers of z^-1 up to the same one are, backwards, powers of z from the same one on: zeros fill the end.
      const int last = domain == Domain::z ? most : order;
      std::array<double, max_order + 1> filled{};
      std::copy_n(values.begin(), order + 1, filled.begin());
      count(line, last + 1);
      coefficients(std::span(filled).first(last + 1), values_per_line);
    };
    list(numerator_count, entry->numerator, entry->numerator_order);
    list(denominator_count, entry->denominator, entry->denominator_order);
  }

  void operator()(const PoleZeroEntry *entry) {
    gain(entry->gain);
    const auto list = [&](const CountLine &line, std::span<const std::complex<double>> values) {
      count(line, static_cast<int>(values.size()));
      for (const auto &place : values) text += tap(place.real()) + "   " + tap(place.imag()) + "\n";
    };
    list(zero_count, std::span(entry->zeros).first(entry->real_zeros + entry->complex_zeros));
    list(pole_count, std::span(entry->poles).first(entry->real_poles + entry->complex_poles));
  }

  void operator()(const SectionEntry *entry) {
    const double scale = option == InputOption::sum ? entry->pars : 1;
    gain(entry->gain * scale);
    count(section_count, entry->section_count);
    const auto list = [&](const char *words, std::span<const Triple> triples, double factor) {
      heading(words);
      for (int i = 0; i < entry->section_count; i++) {
        Triple triple = triples[i];
        for (double &value : triple) value = std::ldexp(value, entry->shift[i]) * factor;
        coefficients(triple, 3);
      }
    };
    list(section_numerators, entry->numerators, scale);
    list(section_denominators, entry->denominators, 1);
  }

  void operator()(const LadderEntry *entry) {
    gain(entry->gain);
    count(lead_count, entry->lead);
    count(ladder_order, entry->order);
    heading(ladder_values);
    coefficients(std::span(entry->alpha).first(entry->alpha_count), 1);
  }

  void operator()(const LatticeEntry *entry) {
    gain(entry->gain);
    // With a reflection coefficient of 0 a stage is a delay, as behind the lattice the leading coefficients are.
    const int gammas = entry->order + entry->lead + 1;
    const int order = std::max(gammas - 1, min_lattice_order);
    std::array<double, max_gammas + 1> gamma{}, kappa{};
    std::copy_n(entry->gamma.begin(), gammas, gamma.begin());
    std::copy_n(entry->kappa.begin() + 1, entry->order, kappa.begin());
    count(lead_count, 0);
    count(lattice_order, order);
    heading(gamma_values);
    coefficients(std::span(gamma).first(order + 1), 1);
    heading(kappa_values);
    coefficients(std::span(kappa).first(order), 1);
  }

  void operator()(const FirEntry *entry) {
    appendf(text, "%s%*d GAIN= %s\n", tap_count.label, tap_count.width, entry->length, tap(entry->gain).c_str());
    for (int i = 0; i < (is_half_response(option) ? entry->unique_count : entry->length); i++) {
      const int mirrored = entry->length - 1 - i;
      switch (option) {
      case InputOption::symmetric_fir:
        appendf(text, "H(%4d) = %s =  H(%4d)\n", i, tap(entry->coeff[entry->unique_count - 1 - i]).c_str(), mirrored);
        break;
      case InputOption::antisymmetric_fir: {
        const double first = entry->coeff[entry->unique_count - 1 - i];
        appendf(text, "-H(%4d) = %s =  H(%4d)\n", i, tap(first == 0 ? 0 : -first).c_str(), mirrored);
        break;
      }
      default:
        appendf(text, "H(%4d) = %s\n", i, tap(entry->coeff[i]).c_str());
      }
    }
  }
};

double rate_of(SystemEntry entry) {
  return std::visit([](const auto *filter) { return filter->sample_rate; }, entry);
}

} // namespace

int read_system_file(const std::string &path, DesignState &state, SystemEntries &z, SystemEntries &s,
                     SystemReading *reading) {
  SystemReading own;
  Reader reader{.reading = reading ? *reading : own};
  if (!reader.lines.open(path)) {
    reader.reading.reason = unreadable(path);
    return cannot_open;
  }
  return read(reader, state, z, s);
}

int read_system_text(std::string_view text, DesignState &state, SystemEntries &z, SystemEntries &s,
                     SystemReading *reading) {
  SystemReading own;
  Reader reader{.reading = reading ? *reading : own};
  reader.lines.open_text(text);
  return read(reader, state, z, s);
}

int load_system_file(const std::string &path) {
  SystemReading reading;
  const int result = read_system_file(path, design_state, z_entries, s_entries, &reading);
  if (result != success) {
    const std::string where = reading.line > 0 ? formatf("%s:%d: ", path.c_str(), reading.line) : path + ": ";
    post_message(Message::system_file_refused, where + reading.reason);
    return result;
  }
  design_state.prewarp_frequency = 0; // belonged to the system before
  const bool digital = reading.domain == Domain::z;
  (digital ? z_path[code(reading.option)] : s_path[code(reading.option)]) = path;
  trace(" read filter analysis file\n");
  trace(" %s Domain type: %s\n", digital ? "Z" : "S", input_options[code(reading.option)].name.data());
  return success;
}

SystemEntry system_entry(const SystemEntries &entries, InputOption option) {
  switch (option) {
  case InputOption::ratio:
    return &entries.ratio;
  case InputOption::pole_zero:
    return &entries.pole_zero;
  case InputOption::product:
    return &entries.product;
  case InputOption::sum:
    return &entries.sum;
  case InputOption::ladder_1:
    return &entries.ladder_1;
  case InputOption::ladder_2:
    return &entries.ladder_2;
  case InputOption::lattice:
    return &entries.lattice;
  default:
    return &fir_entry(entries, option);
  }
}

SystemEntry form_entry(const IirForms &forms, InputOption option) {
  switch (option) {
  case InputOption::pole_zero:
    return &forms.pole_zero;
  case InputOption::product:
    return &forms.cascade;
  case InputOption::sum:
    return &forms.parallel;
  case InputOption::ladder_1:
    return &forms.ladder_1;
  case InputOption::ladder_2:
    return &forms.ladder_2;
  case InputOption::lattice:
    return &forms.lattice;
  default:
    return &forms.ratio;
  }
}

std::optional<std::string> format_system_file(Domain domain, InputOption option, SystemEntry entry, int frequency_mode,
                                              SystemDigits digits) {
  Writer writer{domain, option, digits};
  const bool digital = domain == Domain::z;
  const InputOptionRow &row = input_options[code(option)];
  const UnitRow &unit = unit_row(frequency_mode);
  const double rate = rate_of(entry) * (frequency_mode ? 1.0 : inverse_two_pi);
  appendf(writer.text, "%s\n", digital ? z_header.data() : s_header.data());
  appendf(writer.text, "%s%s\n", option_label.data(), digital ? row.z_header.data() : row.s_header.data());
  appendf(writer.text, "%s% .*e %s\n", sampling_label, (digits.rate ? digits.rate : stated_rate_digits) - 1,
          writer.checked(rate), unit.file_word.data());
  std::visit(writer, entry);
  if (!writer.finite) return std::nullopt;
  return std::move(writer.text);
}

std::optional<std::string> format_analysis_input() {
  const DesignState &selections = design_record.selections;
  const bool digital = selections.DesignOrAnalysisType == code(DesignMethod::z_analysis);
  if (!digital && selections.DesignOrAnalysisType != code(DesignMethod::s_analysis)) return std::nullopt;
  const auto option = static_cast<InputOption>(digital ? selections.z_input_option : selections.s_input_option);
  return format_system_file(digital ? Domain::z : Domain::s, option,
                            system_entry(digital ? z_entries : s_entries, option), selections.FrequencyMode);
}

Status write_system_file(const std::string &path, const std::string &text) {
  std::string why;
  if (save_file(path, text, why)) return success;
  post_message(Message::cannot_create_file, why);
  return cannot_create;
}

} // namespace brisel
