#include "engine/files/coefficient_file.h"

#include "engine/core/front_end.h"
#include "engine/core/spec_check.h"
#include "engine/files/entered_fir.h"
#include "engine/files/fixed_columns.h"
#include "engine/files/number_format.h"
#include "engine/files/text_file.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cmath>
#include <span>
#include <unistd.h>

namespace brisel {

CoefficientFile coefficient_file;

namespace {

constexpr std::string_view first_line = "FILTER COEFFICIENT FILE";
constexpr std::string_view floating_point = "FLOATING POINT";
constexpr std::size_t line_capacity = 190;
constexpr std::size_t tag_columns = 40; // in which the capital letter of a list stands
constexpr int all_digits = 22;          // width of the IIR reals of a temporary file
constexpr int max_bits = 52;
constexpr std::int64_t min_gain_shift = -1100, max_gain_shift = 31, max_section_shift = 31;
constexpr std::int64_t max_integer = std::int64_t{1} << 62;
constexpr std::string_view system_analysis = "SYSTEM ANALYSIS";
constexpr const char *temporary_file = "_temp.flt";

constexpr std::array<std::string_view, 3> quantization_types{"BLOCK FLOATING POINT", "FRACTIONAL FIXED POINT",
                                                             "FLOATING POINT"};
constexpr std::array<std::string_view, 10> scaling_codes{"CASCADE FORM I",
                                                         "CASCADE FORM II",
                                                         "PARALLEL FORM I (TRANSPOSE FORM)",
                                                         "PARALLEL FORM II",
                                                         "FLOATING POINT IMPLEMENTATION",
                                                         "FLOATING POINT IMPLEMENTATION - SUM",
                                                         "RATIO OF POLYNOMIALS",
                                                         "LADDER STRUCTURE FORM I",
                                                         "LADDER STRUCTURE FORM II",
                                                         "LATTICE STRUCTURE"};

// First statuses of the bodies; the number of the value that failed is added.
constexpr int fir_integers = 12000, fir_reals = 16000, list_body = 22000, floating_body = 24003,
              integer_listing_body = 26000, real_listing_body = 28000, section_without_tag = 555;

bool is_parallel(ScalingCode scaling) {
  return scaling == ScalingCode::parallel_1 || scaling == ScalingCode::parallel_2;
}
bool is_floating(ScalingCode scaling) {
  return scaling == ScalingCode::floating_cascade || scaling == ScalingCode::floating_sum;
}
bool is_section_form(ScalingCode scaling) {
  return code(scaling) <= code(ScalingCode::floating_sum);
}
bool is_block(const CoefficientFile &image) {
  return image.quantization == QuantizationType::block_floating_point;
}
bool two_edges(const CoefficientFile &image) {
  return image.filter_type == code(FilterType::band_pass) || image.filter_type == code(FilterType::band_stop);
}

// --- IIR header: one row a line, for writer and reader ---

bool read_number(std::string_view line, std::size_t column, double &value) {
  const auto number = column_number(line, column);
  if (number) value = *number;
  return number.has_value();
}

bool read_integer(std::string_view line, int lowest, int highest, int &value) {
  const auto number = column_integer(line, 21);
  if (!number || *number < lowest || *number > highest) return false;
  value = static_cast<int>(*number);
  return true;
}

/// The sampling frequency at `column`, and the unit from the first "H" or "R" at `unit_column` or later.
bool read_sampling(std::string_view line, std::size_t column, std::size_t unit_column, CoefficientFile &image) {
  const std::size_t unit = line.find_first_of("HR", std::min(unit_column, line.size()));
  if (unit == line.npos || !read_number(line, column, image.sampling_frequency)) return false;
  image.unit = line[unit] == 'R';
  const double rate = image.sampling_frequency * (image.unit ? 1.0 : two_pi);
  return rate >= min_sampling_frequency && rate <= max_sampling_frequency;
}

/// The code, from 1, of the name behind `prefix`; 0 for none.
template <std::size_t size>
std::int8_t named_code(std::string_view line, std::string_view prefix,
                       const std::array<std::string_view, size> &names) {
  if (!line.starts_with(prefix)) return 0;
  const auto found = std::ranges::find(names, line.substr(prefix.size()));
  return found == names.end() ? 0 : static_cast<std::int8_t>(found - names.begin() + 1);
}

bool read_type(std::string_view line, CoefficientFile &image) {
  const std::string_view name = line.substr(std::min<std::size_t>(28, line.size()));
  image.system_analysis = name == system_analysis;
  if (image.system_analysis) return true;
  for (const FilterType type : {FilterType::low_pass, FilterType::high_pass, FilterType::band_pass,
                                FilterType::band_stop, FilterType::arbitrary_group_delay})
    if (name == filter_types[code(type)].file_name) {
      image.filter_type = code(type);
      return true;
    }
  return false;
}

bool read_edges(std::string_view line, std::array<double, 2> &edges, bool two) {
  return read_number(line, 28, edges[0]) && (!two || read_number(line, 40, edges[1]));
}

struct HeaderText {
  NumberText &out;
  const CoefficientFile &image;
  double factor = image.unit ? 1.0 : inverse_two_pi;
  const char *unit = unit_row(image.unit).file_word.data();

  void words(const char *label, std::string_view name) {
    appendf(out.text, "%s%.*s\n", label, static_cast<int>(name.size()), name.data());
  }
  void ripple(const char *label, double value) {
    out.append(label);
    out.number(-value, 10);
    out.append("\n");
  }
  void edges(const char *band, const std::array<double, 2> &edges) {
    const bool two = two_edges(image);
    appendf(out.text, "%s CUTOFF FREQUENC%s ", band, two ? "IES" : "Y  ");
    for (int i = 0; i < 1 + two; i++) {
      out.number(edges[i] * factor, 12);
      out.append(" ");
    }
    appendf(out.text, "%s\n", unit);
  }
  void sampling() {
    out.append("SAMPLING FREQUENCY          ");
    out.number(image.sampling_frequency * factor, image.rate_width);
    appendf(out.text, " %s\n", unit);
  }
  void integer(const char *label, int value) { appendf(out.text, "%s%4d%5Xh\n", label, value, value); }
};

struct HeaderLine {
  int missing; // status when the line is not there
  int refused; // status when it says something else than it may
  const char *expected;
  void (*write)(HeaderText &text, const CoefficientFile &image);
  bool (*read)(std::string_view line, CoefficientFile &image);
};
using Image = CoefficientFile;
constexpr auto passed_over = [](std::string_view, Image &) { return true; };
constexpr std::array header{
    HeaderLine{20001, 20002, "a filter type",
               [](HeaderText &text, const Image &image) {
                 text.words("FILTER TYPE                 ",
                            image.system_analysis ? system_analysis : filter_types[image.filter_type].file_name);
               },
               read_type},
    HeaderLine{20003, 20003, "an analog filter type",
               [](HeaderText &text, const Image &image) {
                 text.words("ANALOG FILTER TYPE          ", analog_prototypes[image.analog_type].file_name);
               },
               passed_over},
    HeaderLine{20004, 20004, "a passband ripple at column 29",
               [](HeaderText &text, const Image &image) {
                 text.ripple("PASSBAND RIPPLE IN -dB        ", image.passband_ripple);
               },
               [](std::string_view line, Image &image) { return read_number(line, 28, image.passband_ripple); }},
    HeaderLine{20005, 20005, "a stopband ripple at column 29",
               [](HeaderText &text, const Image &image) {
                 text.ripple("STOPBAND RIPPLE IN -dB        ", image.stopband_ripple);
               },
               [](std::string_view line, Image &image) { return read_number(line, 28, image.stopband_ripple); }},
    HeaderLine{
        20006, 20006, "passband edges from column 29 on",
        [](HeaderText &text, const Image &image) { text.edges("PASSBAND", image.passband_edge); },
        [](std::string_view line, Image &image) { return read_edges(line, image.passband_edge, two_edges(image)); }},
    HeaderLine{
        20007, 20007, "stopband edges from column 29 on",
        [](HeaderText &text, const Image &image) { text.edges("STOPBAND", image.stopband_edge); },
        [](std::string_view line, Image &image) { return read_edges(line, image.stopband_edge, two_edges(image)); }},
    HeaderLine{20008, 20008, "a sampling frequency above zero at column 29, and its unit",
               [](HeaderText &text, const Image &) { text.sampling(); },
               [](std::string_view line, Image &image) { return read_sampling(line, 28, 30, image); }},
    HeaderLine{20009, 20009, "a design method",
               [](HeaderText &text, const Image &image) {
                 text.words("FILTER DESIGN METHOD: ", z_transforms[code(image.z_transform)].file_name);
               },
               passed_over},
    HeaderLine{20010, 20011, "a filter order of 0 to 200 at column 22",
               [](HeaderText &text, const Image &image) { text.integer("FILTER ORDER         ", image.count); },
               [](std::string_view line, Image &image) { return read_integer(line, 0, max_order, image.count); }},
    HeaderLine{20012, 20013, "a section for every two orders at column 22",
               [](HeaderText &text, const Image &image) { text.integer("NUMBER OF SECTIONS   ", image.section_count); },
               [](std::string_view line, Image &image) {
                 return read_integer(line, 0, max_sections, image.section_count) &&
                        image.section_count == (image.count + 1) / 2;
               }},
    HeaderLine{20014, 20015, "1 to 52 quantized bits at column 22",
               [](HeaderText &text, const Image &image) { text.integer("NO. OF QUANTIZED BITS", image.bits); },
               [](std::string_view line, Image &image) { return read_integer(line, 1, max_bits, image.bits); }},
    HeaderLine{20016, 20017, "a quantization type",
               [](HeaderText &text, const Image &image) {
                 text.words("QUANTIZATION TYPE - ", quantization_types[code(image.quantization) - 1]);
               },
               [](std::string_view line, Image &image) {
                 const std::int8_t found = named_code(line, "QUANTIZATION TYPE - ", quantization_types);
                 image.quantization = static_cast<QuantizationType>(found);
                 return found != 0;
               }},
    HeaderLine{20018, 20019, "what the coefficients are scaled for",
               [](HeaderText &text, const Image &image) {
                 text.words("COEFFICIENTS SCALED FOR ", scaling_codes[code(image.scaling) - 1]);
               },
               [](std::string_view line, Image &image) {
                 const std::int8_t found = named_code(line, "COEFFICIENTS SCALED FOR ", scaling_codes);
                 image.scaling = static_cast<ScalingCode>(found);
                 return found != 0;
               }},
};

// --- bodies of second-order sections: one walk, for writer and reader ---

struct SectionWriter {
  NumberText &out;
  int width;
  bool fits = true;

  bool start_listing(int) { return true; }
  bool integer(std::int64_t &value, const std::string &comment) {
    if (value < -max_integer || value > max_integer) fits = false;
    appendf(out.text, "%11lld %8X     /* %-28s */\n", static_cast<long long>(value), static_cast<unsigned>(value),
            comment.c_str());
    return true;
  }
  bool shift(std::int64_t &value, std::int64_t lowest, const std::string &comment) {
    if (value < lowest || value > max_gain_shift) fits = false;
    return integer(value, comment);
  }
  bool negated(std::int64_t &value, const std::string &comment) {
    std::int64_t other = -value;
    return integer(other, comment);
  }
  bool real(double &value, const std::string &comment) {
    out.number(value, width);
    appendf(out.text, "        /* %s */\n", comment.c_str());
    return true;
  }
  bool negated(double &value, const std::string &comment) {
    double other = value == 0 ? 0 : -value;
    return real(other, comment);
  }
  /// A section whose b0 is 1 does without it: its first line is b2, and the tag says so.
  bool first_real(SectionReals &section, int number, bool &whole) {
    whole = section.b[0] != 1;
    return whole ? real(section.b[0], formatf("Section %d Coeff B0", number))
                 : real(section.b[2], formatf("Section %d Coeff B2", number));
  }
};

template <class Io> bool integer_listing(Io &io, CoefficientFile &image) {
  if (!io.start_listing(integer_listing_body)) return false;
  if (!io.shift(image.shift, min_gain_shift, "shift count for overall gain") ||
      !io.integer(image.gain_word, "overall gain"))
    return false;
  if (is_parallel(image.scaling) && is_block(image)) {
    for (double &scale : image.section_scale)
      if (!io.real(scale, "Section Gain")) return false;
  } else if (is_parallel(image.scaling)) {
    if (!io.shift(image.direct_shift, min_gain_shift, "shift count for direct term") ||
        !io.integer(image.direct_word, "direct term"))
      return false;
  }
  int number = 0;
  for (SectionIntegers &section : image.section_integers) {
    number++;
    const auto named = [number](const char *what) { return formatf("Section %d %s", number, what); };
    if (!io.shift(section.shift, 0, named("shift count")) || !io.integer(section.b[0], named("Coeff B0")) ||
        !io.integer(section.b[1], named("Coeff B1")) || !io.integer(section.b[2], named("Coeff B2")) ||
        (is_block(image) && !io.integer(section.a0, named("Coeff A0"))) ||
        !io.negated(section.a[0], named("Coeff -A1")) || !io.negated(section.a[1], named("Coeff -A2")))
      return false;
  }
  return true;
}

template <class Io> bool real_listing(Io &io, CoefficientFile &image) {
  int number = 0;
  for (SectionReals &section : image.section_reals) {
    number++;
    const auto named = [number](const char *what) { return formatf("Section %d Coeff %s", number, what); };
    bool whole = false;
    if (!io.first_real(section, number, whole) || !io.real(section.b[1], named("B1")) ||
        (whole && !io.real(section.b[2], named("B2"))) || !io.negated(section.a[0], named("-A1")) ||
        !io.negated(section.a[1], named("-A2")))
      return false;
  }
  return true;
}

template <class Io> bool section_body(Io &io, CoefficientFile &image) {
  if (is_floating(image.scaling))
    return io.start_listing(floating_body - 1) &&
           (image.scaling == ScalingCode::floating_sum ? io.real(image.direct_term, "Direct Term")
                                                       : io.real(image.gain_multiplier, "Overall Gain")) &&
           real_listing(io, image);
  return integer_listing(io, image) && io.start_listing(real_listing_body) && real_listing(io, image);
}

// --- writer ---

void write_fir(NumberText &out, const CoefficientFile &image) {
  const bool fixed = image.quantization == QuantizationType::fir_fixed_point;
  HeaderText header_text{out, image};
  appendf(out.text, "FIR DESIGN%10s%s\n", "", fixed ? "" : floating_point.data());
  header_text.sampling();
  appendf(out.text, "%4d%18s/* number of taps in decimal     */\n", image.count, "");
  appendf(out.text, "%4X%18s/* number of taps in hexadecimal */\n", static_cast<unsigned>(image.count), "");
  appendf(out.text, "%2d%20s/* number of bits in quantized coefficients (dec) */\n", image.bits, "");
  appendf(out.text, "%4X%18s/* number of bits in quantized coefficients (hex) */\n", static_cast<unsigned>(image.bits),
          "");
  if (fixed) {
    appendf(out.text, "%2d%20s/* shift count in decimal  */\n", static_cast<int>(image.shift), "");
    appendf(out.text, "%4X  ", static_cast<unsigned>(image.shift));
    out.number(image.gain_multiplier, 15);
    out.append(" /* shift count (hex), gain multiplier */\n");
    for (int tap = 0; tap < image.count; tap++)
      appendf(out.text, "%11lld %8X  /* coefficient of tap%6d */\n", static_cast<long long>(image.integers[tap]),
              static_cast<unsigned>(image.integers[tap]), tap);
  }
  for (int tap = 0; tap < image.count; tap++) {
    out.append("  ");
    out.number(image.reals[tap], fixed ? 22 : 24);
    if (fixed) {
      const auto pattern = std::bit_cast<std::uint64_t>(image.reals[tap]);
      appendf(out.text, " %08X%08X", static_cast<unsigned>(pattern >> 32), static_cast<unsigned>(pattern));
      appendf(out.text, "/* coefficient of tap%6d */\n", tap);
    } else {
      appendf(out.text, " /* coefficient of tap%6d */\n", tap);
    }
  }
}

/// Lines of a list with a running number, the format of the comment carrying the tag that its reader looks for.
void write_list(NumberText &out, int width, std::span<const double> values, const char *comment, int first = 0) {
  for (const double value : values) {
    out.number(value, width);
    appendf(out.text, "        /* %s%d */\n", comment, first++);
  }
}

bool write_iir(NumberText &out, const CoefficientFile &image, int width) {
  out.append("IIR DESIGN\n");
  HeaderText header_text{out, image};
  for (const HeaderLine &line : header) line.write(header_text, image);
  if (is_section_form(image.scaling)) {
    CoefficientFile copy = image; // the walk that reader and writer share takes what it could change
    SectionWriter writer{out, width};
    return section_body(writer, copy) && writer.fits;
  }
  out.number(image.gain_multiplier, width);
  out.append("        /* Overall Gain */\n");
  const std::span<const double> values(image.reals);
  const auto first = values.first(image.first_count), rest = values.subspan(image.first_count);
  switch (image.scaling) {
  case ScalingCode::ratio:
    for (const auto &[list, name] : {std::pair(first, "Numerator  "), std::pair(rest, "Denominator")}) {
      int tap = 0;
      for (const double value : list) {
        out.number(value, width);
        appendf(out.text, "        /* %s Tap Number%5d */\n", name, tap++);
      }
    }
    return true;
  case ScalingCode::lattice:
    write_list(out, width, first, "Gamma Coeff G");
    write_list(out, width, rest.first(image.lead), "Leading Coeff A");
    write_list(out, width, rest.subspan(image.lead), "Kappa Coeff K", 1);
    return true;
  default:
    write_list(out, width, first, "Leading Coeff A");
    write_list(out, width, rest, "Cont Fract Coeff B");
    return true;
  }
}

// --- reader ---

struct Reader {
  LineReader lines{line_capacity};
  CoefficientFile &image;
  CoefficientReading &reading;
  int base = 0;   // of the body being read
  int number = 0; // of the value being read

  bool fail(int status, std::string reason) {
    reading.status = status;
    reading.line = lines.line_number();
    reading.last_line = lines.line();
    reading.reason = std::move(reason);
    return false;
  }
  bool next(int status, const char *expected) {
    if (lines.next()) return true;
    return fail(status, lines.too_long() ? formatf("the line is longer than %zu characters", line_capacity - 2)
                                         : formatf("the file ends where %s was expected", expected));
  }
  bool expect(int status, const char *expected) { return fail(status, formatf("this line should hold %s", expected)); }

  // Values of a body, each at the start of its line.
  bool start_listing(int first_status) {
    base = first_status;
    number = 0;
    return true;
  }
  bool integer(std::int64_t &value, std::string_view) {
    number++;
    if (!next(base + number, "an integer")) return false;
    const auto read = column_integer(lines.line(), 0);
    if (!read || *read < -max_integer || *read > max_integer) return expect(base + number, "an integer");
    value = *read;
    return true;
  }
  bool shift(std::int64_t &value, std::int64_t lowest, std::string_view comment) {
    if (!integer(value, comment)) return false;
    const std::int64_t highest = lowest == 0 ? max_section_shift : max_gain_shift;
    if (value >= lowest && value <= highest) return true;
    return fail(base + number,
                formatf("a shift count of %lld is not within %lld to %lld", static_cast<long long>(value),
                        static_cast<long long>(lowest), static_cast<long long>(highest)));
  }
  bool negated(std::int64_t &value, std::string_view comment) {
    if (!integer(value, comment)) return false;
    value = -value;
    return true;
  }
  bool real(double &value, std::string_view) {
    number++;
    if (!next(base + number, "a number")) return false;
    return read_number(lines.line(), 0, value) || expect(base + number, "a number");
  }
  bool negated(double &value, std::string_view comment) {
    if (!real(value, comment)) return false;
    value = value == 0 ? 0 : -value;
    return true;
  }
  bool first_real(SectionReals &section, int section_number, bool &whole) {
    double value = 0;
    if (!real(value, "")) return false;
    const std::string &line = lines.line();
    const std::size_t tag = line.rfind('B');
    if (tag == line.npos)
      return fail((base == floating_body - 1 ? floating_body : base) + section_without_tag,
                  formatf("the first coefficient of section %d is not marked with a B", section_number));
    whole = tag + 1 < line.size() && line[tag + 1] == '0';
    section.b[whole ? 0 : 2] = value;
    if (!whole) section.b[0] = 1;
    return true;
  }

  // Lists that end where a line does not carry their capital letter.
  bool in_line = false; // a line is waiting
  bool advance() {
    in_line = lines.next();
    return in_line || !lines.too_long() || next(base + number + 1, "");
  }
  bool tagged(char tag) const {
    return in_line && std::string_view(lines.line()).substr(0, tag_columns).find(tag) != std::string_view::npos;
  }
  bool list_value(std::size_t capacity) {
    number++;
    double value = 0;
    if (image.reals.size() >= capacity) return fail(base + number, formatf("more than %zu coefficients", capacity));
    if (!read_number(lines.line(), 0, value)) return expect(base + number, "a number");
    image.reals.push_back(value);
    return advance();
  }
  bool list(char tag, std::size_t most, int &count) {
    const std::size_t start = image.reals.size();
    while (tagged(tag))
      if (!list_value(start + most)) return false;
    count = static_cast<int>(image.reals.size() - start);
    return true;
  }
  /// A list whose values beyond `capacity` are passed over.
  bool leading_values(char tag, std::size_t capacity) {
    while (tagged(tag))
      if (!(image.reals.size() < capacity ? list_value(capacity) : advance())) return false;
    return true;
  }
  bool exactly(int count, int wanted, const char *what) {
    return count == wanted || fail(base + number + 1, formatf("%d %s where %d were expected", count, what, wanted));
  }

  bool list_body_of(ScalingCode scaling) {
    start_listing(list_body);
    const int order = image.count;
    int count = 0;
    if (!real(image.gain_multiplier, "") || !advance()) return false;
    switch (scaling) {
    case ScalingCode::ratio: {
      const std::size_t capacity = 2 * static_cast<std::size_t>(order) + 2;
      if (!leading_values('N', capacity)) return false;
      image.first_count = static_cast<int>(image.reals.size());
      // Kept: the first line without an N is a denominator coefficient whatever else it carries.
      if (in_line && image.reals.size() < capacity && !list_value(capacity)) return false;
      return leading_values('D', capacity);
    }
    case ScalingCode::lattice:
      return list('G', max_order + 1, image.first_count) &&
             exactly(image.first_count - 1, order, "gamma coefficients after the first") &&
             list('L', max_lead, image.lead) && list('K', max_order, count) &&
             exactly(count, order, "kappa coefficients");
    default:
      if (!list('L', max_lead, image.lead) || !list('F', 2 * max_order + 1, count)) return false;
      image.first_count = image.lead;
      return exactly(count, 2 * order + 1, "continued fraction coefficients");
    }
  }

  bool iir() {
    image.variant = CoefficientVariant::iir;
    for (const HeaderLine &line : header) {
      if (!next(line.missing, line.expected)) return false;
      if (!line.read(lines.line(), image)) return expect(line.refused, line.expected);
    }
    if (!is_section_form(image.scaling)) return list_body_of(image.scaling);
    image.section_reals.resize(image.section_count);
    if (!is_floating(image.scaling)) image.section_integers.resize(image.section_count);
    if (is_parallel(image.scaling) && is_block(image)) image.section_scale.resize(image.section_count);
    return section_body(*this, image);
  }

  bool line_integer(int missing, int refused, const char *expected, long long lowest, long long highest,
                    long long &value) {
    if (!next(missing, expected)) return false;
    const auto read = column_integer(lines.line(), 0);
    if (!read || *read < lowest || *read > highest) return expect(refused, expected);
    value = *read;
    return true;
  }

  bool fir(bool floating) {
    image.variant = CoefficientVariant::fir;
    image.quantization = floating ? QuantizationType::floating_point : QuantizationType::fir_fixed_point;
    if (!next(10001, "the sampling frequency")) return false;
    if (!read_sampling(lines.line(), 20, 20, image))
      return expect(10001, "a sampling frequency above zero at column 21, and its unit");
    long long count = 0, bits = 0, shift = 0;
    if (!line_integer(10002, 10003, "1 to 50000 taps", 1, max_taps, count) ||
        !next(10004, "the number of taps in hexadecimal") ||
        !line_integer(10005, 10006, "1 to 52 quantized bits", 1, max_bits, bits) ||
        !next(10007, "the number of bits in hexadecimal"))
      return false;
    image.count = static_cast<int>(count);
    image.bits = static_cast<int>(bits);
    if (!floating) image.integers.resize(image.count);
    image.reals.resize(image.count);
    if (!floating) {
      if (!line_integer(10010, 10010, "a shift count of -1100 to 31", min_gain_shift, max_gain_shift, shift) ||
          !next(10011, "the gain multiplier"))
        return false;
      image.shift = shift;
      const std::string_view line = lines.line();
      const std::size_t word = std::min(line.find_first_not_of(" \t"), line.size());
      const std::size_t behind = std::min(line.find_first_of(" \t", word), line.size());
      if (!read_number(line, behind, image.gain_multiplier)) return expect(10011, "the gain multiplier");
      start_listing(fir_integers);
      for (std::int64_t &value : image.integers)
        if (!integer(value, "")) return false;
    }
    start_listing(fir_reals);
    for (double &value : image.reals)
      if (!real(value, "")) return false;
    return true;
  }

  bool file() {
    if (!next(2, first_line.data())) return false;
    if (!lines.line().starts_with(first_line)) return expect(3, first_line.data());
    if (!next(4, "FIR DESIGN or IIR DESIGN")) return false;
    const std::string_view line = lines.line();
    if (line.empty() || !line.substr(1).starts_with("IR DESIGN")) return expect(5, "FIR DESIGN or IIR DESIGN");
    if (line[0] == 'I') return iir();
    if (line[0] != 'F') return expect(6, "FIR DESIGN or IIR DESIGN");
    std::string_view rest = line.size() >= 13 ? line.substr(12) : std::string_view();
    rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
    return fir(rest.starts_with(floating_point));
  }
};

void release(CoefficientFile &image) {
  image = CoefficientFile{};
}

/// To radians per second, and what the words stand for.
void finish(CoefficientFile &image) {
  if (!image.unit) {
    image.sampling_frequency *= two_pi;
    for (double &edge : image.passband_edge) edge *= two_pi;
    for (double &edge : image.stopband_edge) edge *= two_pi;
  }
  image.passband_ripple = std::fabs(image.passband_ripple);
  image.stopband_ripple = std::fabs(image.stopband_ripple);
  if (image.variant == CoefficientVariant::fir || !is_section_form(image.scaling)) return;
  const auto value = [&](std::int64_t word, std::int64_t shift) {
    return std::ldexp(static_cast<double>(word), static_cast<int>(shift) - (image.bits - 1));
  };
  if (is_floating(image.scaling)) return;
  const double gain = value(image.gain_word, image.shift);
  if (!is_block(image))
    for (SectionIntegers &section : image.section_integers)
      section.a0 = image.bits - 1 >= section.shift ? std::int64_t{1} << (image.bits - 1 - section.shift) : 0;
  if (is_parallel(image.scaling) && is_block(image)) {
    image.direct_term = gain;
  } else {
    image.gain_multiplier = gain;
    image.direct_term = value(image.direct_word, image.direct_shift);
  }
}

void complain(const CoefficientReading &reading, const CoefficientFile &image) {
  front_end->reader_complaint(formatf("filter loading status = %d\nThe last line read from flt file is\n%s\n",
                                      reading.status, reading.last_line.c_str()));
  if (image.variant == CoefficientVariant::iir)
    front_end->reader_note(formatf("#sects %d, ftype %d, qtype %d, rtype %d\n", image.section_count, image.filter_type,
                                   code(image.quantization), code(image.scaling)));
}

int read(Reader &reader) {
  CoefficientFile &image = reader.image;
  const std::string path = image.path;
  release(image);
  image.path = path;
  if (reader.file()) {
    finish(image);
    image.loaded = true;
    return 0;
  }
  const CoefficientReading &reading = reader.reading;
  if (reading.complains) complain(reading, image);
  release(image);
  return reading.status;
}

std::optional<std::string> design_text(int real_width) {
  if (!design_record.valid) {
    post_message(Message::no_design);
    return std::nullopt;
  }
  CoefficientFile image;
  if (!image_of_design(image)) {
    post_message(Message::unsupported_form);
    return std::nullopt;
  }
  auto text = format_coefficient_file(image, real_width);
  if (!text) post_message(Message::result_not_finite, "a coefficient cannot be written");
  return text;
}

} // namespace

std::optional<std::string> format_coefficient_file(const CoefficientFile &image, int real_width) {
  NumberText out;
  out.append(first_line);
  out.append("\n");
  if (image.bits < 1 || image.bits > max_bits) return std::nullopt;
  if (image.variant == CoefficientVariant::fir)
    write_fir(out, image);
  else if (!write_iir(out, image, real_width))
    return std::nullopt;
  return std::move(out).result();
}

int read_coefficient_text(std::string_view text, CoefficientFile &image, CoefficientReading *reading) {
  CoefficientReading own;
  Reader reader{.image = image, .reading = reading ? *reading : own};
  reader.lines.open_text(text);
  return read(reader);
}

std::optional<std::string> format_current_coefficient_file(int real_width) {
  return design_text(real_width);
}

Status write_new_coefficient_file(const std::string &path) {
  const auto text = design_text(all_digits);
  if (!text) return form_not_supported;
  std::string why;
  if (save_new_file(path, *text, why)) return success;
  post_message(errno == EEXIST ? Message::temporary_file_in_the_way : Message::cannot_create_file, why);
  return cannot_create;
}

int load_coefficient_file(const std::string &path, CoefficientReading *reading) {
  CoefficientReading own;
  CoefficientReading &result = reading ? *reading : own;
  Reader reader{.image = coefficient_file, .reading = result};
  release_coefficient_file();
  if (!reader.lines.open(path)) {
    result.reason = unreadable(path);
    return cannot_open;
  }
  coefficient_file.path = path;
  const int status = read(reader);
  if (status == 0) return success;
  const bool header_failed = status < 11000 || (status >= 20000 && status < 21000);
  return header_failed ? format_error : cannot_open;
}

void release_coefficient_file() {
  release(coefficient_file);
}

int load_current_design() {
  if (!design_record.valid) {
    post_message(Message::no_design);
    return 1;
  }
  if (!design_record.quantization.quant) {
    post_message(Message::not_quantized);
    return 2;
  }
  if (write_new_coefficient_file(temporary_file) != success) return 1;
  const int status = load_coefficient_file(temporary_file);
  ::unlink(temporary_file);
  return status;
}

} // namespace brisel
