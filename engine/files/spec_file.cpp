#include "engine/files/spec_file.h"

#include "engine/core/design_state.h"
#include "engine/core/front_end.h"
#include "engine/core/method_rule.h"
#include "engine/core/trace.h"
#include "engine/files/fixed_columns.h"
#include "engine/files/number_format.h"
#include "engine/files/text_file.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace brisel {

namespace {

constexpr std::string_view first_line = "FILTER SPECIFICATION FILE";
constexpr std::size_t line_capacity = 99;
constexpr std::size_t type_column = 40;
constexpr std::size_t band_count_column = 16;
constexpr std::size_t list_flag_column = 27; // of "FUNCTION VALUES FOR BAND n D"
constexpr std::size_t point_value_column = 17;
constexpr std::size_t max_path_length = 1022;
constexpr int bands_per_block = 4;
constexpr int first_cell_column = 20;   // of the numbers in a band block
constexpr int first_letter_column = 25; // of the letters
constexpr int cell_width = 15;
constexpr double default_delay_ripple = 0.01;

enum class Scale { plain, frequency, minus_db };

/// A line of one or two numbers: what the writer puts before them, what the reader passes over.
struct Line {
  const char *label;
  std::size_t skip;
  int width;
  Scale scale;
  SpecField field;
  int count;
};
constexpr Line passband_ripple{"PASSBAND RIPPLE IN -dB        ", 26, 10, Scale::minus_db,
                               SpecField::passband_ripple,       1};
constexpr Line stopband_ripple{"STOPBAND RIPPLE IN -dB        ", 26, 10, Scale::minus_db,
                               SpecField::stopband_ripple,       1};
constexpr Line passband_cutoff{"PASSBAND CUTOFF FREQUENCY   ", 27, 12, Scale::frequency, SpecField::passband_edge, 1};
constexpr Line stopband_cutoff{"STOPBAND CUTOFF FREQUENCY   ", 27, 12, Scale::frequency, SpecField::stopband_edge, 1};
constexpr Line passband_cutoffs{"PASSBAND CUTOFF FREQUENCIES ", 27, 12, Scale::frequency, SpecField::passband_edge, 2};
constexpr Line stopband_cutoffs{"STOPBAND CUTOFF FREQUENCIES ", 27, 12, Scale::frequency, SpecField::stopband_edge, 2};
constexpr Line sampling{"SAMPLING FREQUENCY          ", 27, 12, Scale::frequency, SpecField::sampling_frequency, 1};
constexpr Line desired_slope{"  DESIRED SLOPE     ", 20, 12, Scale::plain, SpecField::slope, 1};
constexpr Line desired_ripple{"  DESIRED RIPPLE    ", 20, 12, Scale::plain, SpecField::passband_ripple, 1};
constexpr Line symbol_rate{"SYMBOL RATE                 ", 27, 12, Scale::frequency, SpecField::symbol_rate, 1};
constexpr Line rolloff{"ROLLOF FACTOR               ", 27, 12, Scale::plain, SpecField::rolloff, 1};
constexpr Line delay_ripple{"GROUP DELAY RIPPLE (LINEAR) ", 27, 12, Scale::plain, SpecField::passband_ripple, 1};

/// A row of a band block: a number per band, or a letter per band that stands for a flag.
struct BandRow {
  const char *label;
  Scale scale;
  SpecField field;
  std::array<std::uint8_t, max_arbitrary_bands> FilterSpec::*flag = nullptr;
  char set = 0, clear = 0;
};
constexpr BandRow lower_edge{"  LOWER BAND EDGE", Scale::frequency, SpecField::band_lower};
constexpr BandRow upper_edge{"  UPPER BAND EDGE", Scale::frequency, SpecField::band_upper};
constexpr BandRow band_value{"  DESIRED VALUE  ", Scale::plain, SpecField::band_value};
constexpr BandRow gain_kind{"  FIX/VAR GAIN", Scale::plain, SpecField::band_value, &FilterSpec::fixed_gain, 'F', 'V'};
constexpr BandRow ripple_kind{"  RIPPLE TYPE",           Scale::plain, SpecField::band_ripple,
                              &FilterSpec::proportional, 'P',          'F'};
constexpr BandRow band_ripple{"  DESIRED RIPPLE ", Scale::plain, SpecField::band_ripple};

constexpr std::array low_high_lines{passband_ripple, stopband_ripple, passband_cutoff, stopband_cutoff, sampling};
constexpr std::array band_pass_stop_lines{passband_ripple, stopband_ripple, passband_cutoffs, stopband_cutoffs,
                                          sampling};
constexpr std::array differentiator_lines{passband_cutoffs, desired_slope, desired_ripple, sampling};
constexpr std::array hilbert_lines{passband_cutoffs, desired_ripple, sampling};
constexpr std::array half_band_lines{stopband_ripple, passband_cutoff, sampling};
constexpr std::array raised_cosine_lines{passband_ripple, stopband_ripple, symbol_rate, rolloff, sampling};
constexpr std::array sampling_line{sampling};
constexpr std::array multiband_rows{lower_edge, upper_edge, band_value, band_ripple};
constexpr std::array arbitrary_rows{lower_edge, upper_edge, band_value, gain_kind, ripple_kind, band_ripple};

/// What follows the type line: lines, then band blocks if there are rows for them.
struct Layout {
  std::span<const Line> lines;
  std::span<const BandRow> rows = {};
};
constexpr std::array<Layout, filter_type_count> layouts{{
    {low_high_lines},
    {low_high_lines},
    {band_pass_stop_lines},
    {band_pass_stop_lines},
    {differentiator_lines},
    {sampling_line, multiband_rows},
    {hilbert_lines},
    {sampling_line, arbitrary_rows},
    {sampling_line},
    {half_band_lines},
    {raised_cosine_lines},
    {raised_cosine_lines},
}};

constexpr bool is_type(const FilterSpec &spec, FilterType type) {
  return spec.type == code(type);
}

int most_bands(const FilterSpec &spec) {
  return is_type(spec, FilterType::arbitrary_magnitude) ? max_arbitrary_bands : max_bands;
}

// --- writer ---

struct Writer {
  const FilterSpec &spec;
  double factor = spec.unit != 0 ? 1.0 : inverse_two_pi; // Kept: also for a unit letter just read
  const char *unit = factor == 1.0 ? units[1].file_word.data() : units[0].file_word.data();
  NumberText out{};

  void number(double value, Scale scale, int width) {
    out.number(scale == Scale::frequency ? value * factor : scale == Scale::minus_db ? -value : value, width);
  }

  void line(const Line &line) {
    out.append(line.label);
    for (int i = 0; i < line.count; i++) {
      if (i > 0) out.append(" ");
      number(spec_value(spec, line.field, i), line.scale, line.width);
    }
    if (line.scale == Scale::frequency) appendf(out.text, " %s", unit);
    out.append("\n");
  }

  /// The cell of a row. Kept: whether an arbitrary magnitude's gain is turned from dB into a factor depends on the list
  /// flag of the first band of its block, not on the band's own.
  double cell(const BandRow &row, int band, int block) const {
    const double value = spec_value(spec, row.field, band);
    if (!is_type(spec, FilterType::arbitrary_magnitude) || row.field != SpecField::band_value) return value;
    if (!spec.fixed_gain[band]) return 0;
    return spec.list_flag[block] ? std::pow(10.0, -0.05 * value) : value;
  }

  void block(std::span<const BandRow> rows, int first, int last) {
    appendf(out.text, "\n%16s", "");
    for (int band = first; band < last; band++) appendf(out.text, "        BAND %2d", band + 1);
    for (const BandRow &row : rows) {
      appendf(out.text, "\n%s", row.label);
      const int indent = first_letter_column - static_cast<int>(std::string_view(row.label).size());
      for (int band = first; band < last; band++) {
        if (row.flag) {
          const char letter = (spec.*row.flag)[band] ? row.set : row.clear;
          appendf(out.text, "%*s%c%*s", indent, "", letter, cell_width - 1 - indent, "");
        } else {
          out.append("   ");
          number(cell(row, band, first), row.scale, 12);
        }
      }
    }
    out.append("\n");
  }

  void points(int first, int count) {
    for (int i = first; i < first + count; i++) {
      out.append("  ");
      number(spec.function_frequency[i], Scale::frequency, 15);
      out.append("  ");
      number(spec.function_value[i], Scale::plain, 15);
      out.append("\n");
    }
    out.append("  ");
    number(-1, Scale::plain, 15);
    out.append("\n");
  }

  void body() {
    const Layout &layout = layouts[spec.type];
    appendf(out.text, "FILTER TYPE:%-30s%2d%c\n", filter_types[spec.type].file_name.data(), spec.type + 1, unit[0]);
    for (const Line &row : layout.lines) line(row);
    if (!layout.rows.empty()) {
      appendf(out.text, "NUMBER OF BANDS %2d\n", spec.band_count);
      for (int first = 0; first < spec.band_count; first += bands_per_block)
        block(layout.rows, first, std::min(first + bands_per_block, spec.band_count));
    }
    if (is_type(spec, FilterType::arbitrary_magnitude))
      for (int band = 0; band < spec.band_count; band++)
        if (!spec.fixed_gain[band]) {
          appendf(out.text, "FUNCTION VALUES FOR BAND %1d %c\n", band + 1, spec.list_flag[band] ? 'D' : 'L');
          points(max_points_per_band * band, spec.point_count[band]);
        }
    if (is_type(spec, FilterType::arbitrary_group_delay)) {
      out.append("FUNCTION VALUES FOR\n");
      points(0, spec.band_count);
      line(delay_ripple);
    }
  }
};

bool counts_fit(const FilterSpec &spec) {
  if (spec.type < 0 || spec.type >= filter_type_count) return false;
  const bool delay = is_type(spec, FilterType::arbitrary_group_delay);
  if (layouts[spec.type].rows.empty() && !delay) return true;
  if (spec.band_count < 0 || spec.band_count > (delay ? max_function_points : most_bands(spec))) return false;
  return std::ranges::all_of(spec.point_count, [](int count) { return count <= max_points_per_band; });
}

// --- reader ---

struct Reader {
  LineReader lines{line_capacity};
  FilterSpec &spec;
  SpecReading &reading;

  bool fail(std::string reason) {
    reading.line = lines.line_number();
    reading.reason = std::move(reason);
    return false;
  }

  bool next(const char *expected) {
    if (lines.next()) return true;
    if (lines.too_long()) return fail(formatf("the line is longer than %zu characters", line_capacity - 2));
    return fail(formatf("the file ends where %s was expected", expected));
  }

  void keep_place(SpecField field, int index) { reading.places.push_back({field, index, lines.line_number()}); }

  /// A number of the line just read, from `column` on; the column behind it goes to `end`.
  bool number(SpecField field, int index, std::size_t column, std::size_t *end = nullptr) {
    const auto value = column_number(lines.line(), column, end);
    if (!value) return fail(formatf("no number at column %zu", column + 1));
    spec_value(spec, field, index) = *value;
    keep_place(field, index);
    return true;
  }

  bool line(const Line &line) {
    if (!next(line.label)) return false;
    std::size_t column = line.skip;
    for (int i = 0; i < line.count; i++)
      if (!number(line.field, i, column, &column)) return false;
    return true;
  }

  bool type_line() {
    if (!next("FILTER TYPE")) return false;
    std::size_t end = 0;
    const std::string_view text = lines.line();
    const auto number = text.size() > type_column && text[type_column - 1] == ' '
                            ? parse_integer(text.substr(type_column), &end)
                            : std::nullopt;
    if (!number) return fail(formatf("no filter type number at column %zu", type_column + 1));
    if (*number < 1 || *number > filter_type_count)
      return fail(formatf("filter type %lld is not 1 to %d", *number, filter_type_count));
    end += type_column;
    if (end >= text.size() || (text[end] != 'H' && text[end] != 'R'))
      return fail("the filter type is not followed by the unit letter H or R");
    spec.type = static_cast<std::int32_t>(*number) - 1;
    spec.unit = static_cast<std::uint8_t>(text[end]);
    return true;
  }

  /// Kept: every block of an arbitrary magnitude has the columns of the first, so a short last block may fill slots
  /// beyond the bands; such cells may be missing, and those beyond the capacity are dropped.
  bool block(std::span<const BandRow> rows, int first) {
    const bool arbitrary = is_type(spec, FilterType::arbitrary_magnitude);
    const int columns = std::min(arbitrary ? spec.band_count : spec.band_count - first, bands_per_block);
    if (arbitrary) spec.list_flag[first] = 0;
    if (!next("an empty line") || !next("the band numbers")) return false;
    for (const BandRow &row : rows) {
      if (!next(row.label)) return false;
      for (int i = 0; i < columns; i++) {
        const int band = first + i;
        const bool surplus = band >= spec.band_count;
        if (row.flag) {
          const std::size_t column = first_letter_column + cell_width * i;
          if (column < lines.line().size()) {
            if (band < max_arbitrary_bands) (spec.*row.flag)[band] = lines.line()[column] == row.set;
          } else if (!surplus) {
            return fail(formatf("no letter %c or %c at column %zu", row.set, row.clear, column + 1));
          }
        } else {
          const std::size_t column = first_cell_column + cell_width * i;
          if (surplus && !column_number(lines.line(), column)) continue;
          if (!number(row.field, band, column)) return false;
        }
      }
    }
    return true;
  }

  bool bands(const Layout &layout) {
    if (!next("NUMBER OF BANDS")) return false;
    const auto count = column_integer(lines.line(), band_count_column);
    if (!count) return fail(formatf("no number of bands at column %zu", band_count_column + 1));
    if (*count < 1 || *count > most_bands(spec))
      return fail(formatf("the number of bands, %lld, is not 1 to %d", *count, most_bands(spec)));
    spec.band_count = static_cast<std::int32_t>(*count);
    keep_place(SpecField::band_count, 0);
    for (int first = 0; first < spec.band_count; first += bands_per_block)
      if (!block(layout.rows, first)) return false;
    return true;
  }

  /// Point lines up to a negative frequency.
  bool points(int first, int capacity, int &count) {
    for (count = 0;; count++) {
      if (!next("a function point or -1")) return false;
      const auto frequency = column_number(lines.line(), 0);
      if (!frequency) return fail("no number at column 1");
      if (*frequency < 0) return true;
      if (count == capacity) return fail(formatf("more than %d function points", capacity));
      if (!number(SpecField::function_frequency, first + count, 0)) return false;
      if (!number(SpecField::function_value, first + count, point_value_column)) return false;
    }
  }

  bool band_functions() {
    for (int band = 0; band < spec.band_count; band++) {
      if (spec.fixed_gain[band]) continue;
      if (!next("FUNCTION VALUES FOR BAND")) return false;
      const std::string &text = lines.line();
      if (text.size() <= list_flag_column) return fail(formatf("no letter D or L at column %zu", list_flag_column + 1));
      spec.list_flag[band] = text[list_flag_column] == 'D';
      keep_place(SpecField::point_count, band);
      int count = 0;
      if (!points(max_points_per_band * band, max_points_per_band, count)) return false;
      spec.point_count[band] = static_cast<std::uint8_t>(count);
    }
    return true;
  }

  bool delay_function() {
    if (!next("FUNCTION VALUES FOR")) return false;
    keep_place(SpecField::band_count, 0);
    int count = 0;
    if (!points(0, max_function_points, count)) return false;
    spec.band_count = count;
    spec.passband_ripple = default_delay_ripple;
    while (lines.next())
      if (lines.line().find_first_not_of(" \t") != std::string::npos)
        return number(delay_ripple.field, 0, delay_ripple.skip);
    return !lines.too_long() || next("");
  }

  bool file() {
    if (!next(first_line.data())) return false;
    if (!lines.line().starts_with(first_line))
      return fail(formatf("the file does not begin with \"%s\"", first_line.data()));
    if (!type_line()) return false;
    const Layout &layout = layouts[spec.type];
    for (const Line &row : layout.lines)
      if (!line(row)) return false;
    if (!layout.rows.empty() && !bands(layout)) return false;
    if (is_type(spec, FilterType::arbitrary_magnitude) && !band_functions()) return false;
    if (is_type(spec, FilterType::arbitrary_group_delay) && !delay_function()) return false;
    return true;
  }
};

void scale_frequencies(FilterSpec &spec, double factor) {
  spec.sampling_frequency *= factor;
  spec.symbol_rate *= factor;
  for (const std::span<double> values : {std::span<double>(spec.passband_edge), std::span<double>(spec.stopband_edge),
                                         std::span<double>(spec.function_frequency), std::span<double>(spec.band_lower),
                                         std::span<double>(spec.band_upper)})
    for (double &value : values) value *= factor;
}

Status read(Reader &reader) {
  FilterSpec &spec = reader.spec;
  spec = FilterSpec{};
  if (!reader.file()) {
    reader.reading.last_line = reader.lines.line();
    front_end->reader_complaint("Loading SPC file error: Last line is \n" + reader.lines.line() + "\n");
    return format_error;
  }
  if (layouts[spec.type].lines.data() == raised_cosine_lines.data()) derive_raised_cosine_edges(spec);
  if (spec.unit == 'H') scale_frequencies(spec, two_pi);
  spec.passband_ripple = std::fabs(spec.passband_ripple);
  spec.stopband_ripple = std::fabs(spec.stopband_ripple);
  return success;
}

} // namespace

std::optional<std::string> format_filter_spec_body(const FilterSpec &spec) {
  if (!counts_fit(spec)) return std::nullopt;
  Writer writer{spec};
  writer.body();
  return std::move(writer.out).result();
}

std::optional<std::string> format_filter_spec(const FilterSpec &spec) {
  auto body = format_filter_spec_body(spec);
  if (body) body->insert(0, std::string(first_line) + "\n");
  return body;
}

int SpecReading::line_of(SpecField field, int index) const {
  for (const Place &place : places)
    if (place.field == field && place.index == index) return place.line;
  return 2;
}

Status read_filter_spec(const std::string &path, FilterSpec &spec, SpecReading *reading) {
  SpecReading own;
  Reader reader{.spec = spec, .reading = reading ? *reading : own};
  return reader.lines.open(path) ? read(reader) : cannot_open;
}

Status read_filter_spec_text(std::string_view text, FilterSpec &spec, SpecReading *reading) {
  SpecReading own;
  Reader reader{.spec = spec, .reading = reading ? *reading : own};
  reader.lines.open_text(text);
  return read(reader);
}

namespace {

// By field; the two counts are whole numbers.
constexpr std::array field_names{"sampling frequency",
                                 "passband edge",
                                 "stopband edge",
                                 "passband ripple",
                                 "stopband ripple",
                                 "symbol rate",
                                 "rolloff factor",
                                 "slope",
                                 "",
                                 "lower edge of band",
                                 "upper edge of band",
                                 "value of band",
                                 "ripple of band",
                                 "",
                                 "frequency of point",
                                 "value of point"};

bool is_frequency(SpecField field) {
  constexpr std::array fields{SpecField::sampling_frequency, SpecField::passband_edge, SpecField::stopband_edge,
                              SpecField::symbol_rate,        SpecField::band_lower,    SpecField::band_upper,
                              SpecField::function_frequency};
  return std::find(fields.begin(), fields.end(), field) != fields.end();
}

} // namespace

std::string changed_by_columns(const FilterSpec &spec) {
  constexpr double rounding = 1e-9;
  constexpr int most_listed = 4;
  const auto text = format_filter_spec(spec);
  FilterSpec back{};
  SpecReading reading;
  if (!text || read_filter_spec_text(*text, back, &reading) != success) return "";
  settle_edges(back);
  const double unit = in_radians(spec) ? 1 : inverse_two_pi;
  const char *const unit_name = in_radians(spec) ? " rad/s" : " Hz";
  std::string list;
  int changed = 0;
  for (const auto &[field, index, line] : reading.places) {
    const std::string name = field_names[static_cast<std::size_t>(field)];
    // An arbitrary magnitude's values may be rewritten on purpose, see the writer.
    const bool rewritten = field == SpecField::band_value && is_type(spec, FilterType::arbitrary_magnitude);
    if (name.empty() || rewritten) continue;
    const double meant = spec_value(spec, field, index), written = spec_value(std::as_const(back), field, index);
    if (std::fabs(written - meant) <= rounding * std::fabs(meant) || ++changed > most_listed) continue;
    const bool frequency = is_frequency(field);
    const double factor = frequency ? unit : 1;
    const std::string number = field >= SpecField::band_lower ? formatf(" %d", index + 1) : "";
    list += formatf("%s%s%s %.12g%s as %.12g", list.empty() ? "" : ", ", name.c_str(), number.c_str(), meant * factor,
                    frequency ? unit_name : "", written * factor);
  }
  if (changed == 0) return "";
  if (changed > most_listed) list += formatf(" and %d more", changed - most_listed);
  return "The columns of the specification file do not hold every digit; it has " + list + ".";
}

bool write_filter_spec(const std::string &path, const FilterSpec &spec, std::string *why) {
  std::string reason;
  const auto text = format_filter_spec(spec);
  if (text && save_file(path, *text, reason)) return true;
  if (!text) reason = path + ": the specification holds a value that cannot be written";
  if (why) *why = std::move(reason);
  return false;
}

Status load_filter_spec(const std::string &path) {
  FilterSpec scratch{};
  SpecReading reading;
  const Status result = read_filter_spec(path, scratch, &reading);
  const auto where = [&](int line) { return formatf("%s:%d: ", path.c_str(), line); };
  if (result == format_error) post_message(Message::specification_refused, where(reading.line) + reading.reason);
  if (result != success) return result;
  settle_edges(scratch);
  if (const auto complaint = check_spec(scratch)) {
    post_message(Message::impossible_specification,
                 where(reading.line_of(complaint->field, complaint->index)) + complaint->reason);
    return format_error;
  }
  const int type = scratch.type;
  spec[type] = scratch;
  current_spec = &spec[type];
  design_state.filter_type = static_cast<std::int8_t>(type);
  apply_method_rule();
  spec_path[type] = path.size() <= max_path_length ? path : std::string();
  if (trace_on) {
    trace(" read filter spc:%s\n", path.c_str());
    trace(" filter type: %s\n", filter_types[type].dialog_name.data());
  }
  return success;
}

} // namespace brisel
