#include "gui/plots/plotted_data.h"

#include "engine/files/text_file.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace brisel {

namespace {

constexpr double silence_db = -590; // what lies below is the floor of the conversion to dB

std::vector<double> finite_values(std::span<const double> values, double above) {
  std::vector<double> kept;
  kept.reserve(values.size());
  for (const double value : values)
    if (std::isfinite(value) && value > above && std::abs(value) < 1e15) kept.push_back(value);
  return kept;
}

bool left_by_reset(const Range &range, const std::array<Range, 2> &resets) {
  return std::find(resets.begin(), resets.end(), range) != resets.end() || !is_usable(range);
}

/// A little more on both sides, so that a curve does not run along the frame; an end at 0 stays.
Range with_margin(const Range &range) {
  const double margin = 0.02 * (range[1] - range[0]);
  return {range[0] == 0 ? 0 : range[0] - margin, range[1] == 0 ? 0 : range[1] + margin};
}

/// `range` if it can be drawn, else the extent of the values.
Range usable_range(const Range &range, std::span<const double> values) {
  if (is_usable(range)) return range;
  const std::vector<double> finite = finite_values(values, -1e15);
  if (finite.empty()) return {0, 1};
  const auto [lowest, highest] = std::minmax_element(finite.begin(), finite.end());
  const double margin = *lowest < *highest ? 0 : std::max(1.0, std::abs(*lowest));
  return {*lowest - margin, *highest + margin};
}

} // namespace

Range automatic_magnitude_range(std::span<const double> magnitude) {
  const std::vector<double> values = finite_values(magnitude, -1);
  const double highest = values.empty() ? 0 : *std::max_element(values.begin(), values.end());
  return highest > 0 ? Range{0, 1.02 * highest} : Range{0, 1};
}

Range automatic_decibel_range(std::span<const double> decibels) {
  std::vector<double> values = finite_values(decibels, silence_db);
  if (values.empty()) return {-100, 0};
  const auto [lowest_place, highest_place] = std::minmax_element(values.begin(), values.end());
  const double lowest = *lowest_place, highest = *highest_place, top = highest + 2;
  if (lowest > highest - 60) return {std::min(lowest - 2, top - 10), top};
  const double usual = 10 * std::round((highest - 100) / 10);
  // Deep side lobes are worth showing; a slope that only falls on and on is not.
  const double deep = highest - 110;
  bool has_lobe = false;
  for (std::size_t i = 1; i + 1 < values.size(); i++)
    has_lobe = has_lobe || (values[i] < deep && values[i] > values[i - 1] && values[i] >= values[i + 1]);
  const auto fifth = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 5);
  std::nth_element(values.begin(), fifth, values.end());
  if (!has_lobe || *fifth >= deep) return {usual, top};
  return {std::max(*fifth - 20, usual - 100), top};
}

PlotData plot_data_of(const PlotDescription &d, const PlotState &state, bool grid, std::string_view problem) {
  PlotData data;
  data.kind = d.kind;
  data.title = d.title;
  data.x_label = d.x_label;
  data.y_label = d.y_label;
  data.problem = problem;
  data.grid = grid;
  data.radians = state.radians;
  if (d.kind == PlotKind::pole_zero) {
    if (state.poles_zeros_computed) {
      data.poles = state.poles;
      data.zeros = state.zeros;
    } else {
      data.note = state.fir_design ? "Zeros are not computed" : "Poles and zeros are not computed";
    }
    data.origin_poles = state.origin_poles;
    data.origin_zeros = state.origin_zeros;
    data.unit_circle = !state.s_plane;
    fit_to_roots(data);
    return data;
  }
  const auto count = static_cast<std::size_t>(d.y ? std::max(d.count, 0) : 0);
  data.curve.y = {d.y, count};
  if (d.x) data.curve.x = {d.x, count};
  data.curve.step = d.x_step;
  data.curve.scale = d.x_scale;
  data.samples_as_marks = d.samples_as_marks;
  data.x_range = {d.x_range[0] * d.x_scale, d.x_range[1] * d.x_scale};
  data.logarithmic = data.is_frequency() && state.log_axis && data.x_range[0] > 0;
  if (!is_usable(data.x_range)) // one sample, one point
    data.x_range =
        count > 0 ? Range{data.curve.x_value(0), data.curve.x_value(std::max<std::size_t>(count, 2) - 1)} : Range{0, 1};
  if (!is_usable(data.x_range)) data.x_range = {0, 1};
  data.round_x = !data.is_frequency();
  data.y_range = usable_range(d.y_range, data.curve.y);
  data.round_y = d.kind != PlotKind::phase;
  if (d.kind >= PlotKind::group_delay) data.y_range = with_margin(data.y_range);
  if (d.kind == PlotKind::magnitude) {
    data.round_y = left_by_reset(d.y_range, default_magnitude_ranges);
    if (data.round_y) data.y_range = automatic_magnitude_range(data.curve.y);
  }
  if (d.kind == PlotKind::log_magnitude) {
    data.round_y = left_by_reset(d.y_range, default_log_magnitude_ranges);
    if (data.round_y) data.y_range = automatic_decibel_range(data.curve.y);
    if (state.ideal) data.reference = {state.ideal, count};
  }
  return data;
}

std::vector<RootMark> root_marks(std::span<const std::complex<double>> roots, int at_origin, double distance) {
  // Places on a lattice of the distance, so that equal roots are neighbours after sorting.
  using Cell = std::tuple<double, double, std::size_t>;
  std::vector<Cell> cells;
  for (std::size_t i = 0; i < roots.size(); i++)
    if (std::isfinite(roots[i].real()) && std::isfinite(roots[i].imag()))
      cells.emplace_back(std::round(roots[i].real() / distance), std::round(roots[i].imag() / distance), i);
  std::sort(cells.begin(), cells.end());
  std::vector<RootMark> marks;
  if (at_origin > 0) marks.push_back({0, at_origin});
  const Cell *previous = nullptr;
  for (const Cell &cell : cells) {
    const auto &[re, im, index] = cell;
    if (at_origin > 0 && re == 0 && im == 0)
      marks.front().count++;
    else if (previous && std::get<0>(*previous) == re && std::get<1>(*previous) == im)
      marks.back().count++;
    else
      marks.push_back({roots[index], 1});
    previous = &cell;
  }
  return marks;
}

void fit_to_roots(PlotData &data) {
  constexpr double z_plane_limit = 2;
  int outside = 0;
  double farthest = 0, reach = data.unit_circle ? 1 : 0;
  for (const auto &roots : {data.poles, data.zeros})
    for (const std::complex<double> &root : roots) {
      const double extent = std::max(std::abs(root.real()), std::abs(root.imag()));
      if (!std::isfinite(extent)) continue;
      farthest = std::max(farthest, std::abs(root));
      if (data.unit_circle && extent > z_plane_limit)
        outside++;
      else
        reach = std::max(reach, extent);
    }
  const double radius = reach > 0 ? 1.05 * reach : 1;
  data.x_range = data.y_range = {-radius, radius};
  data.round_x = data.round_y = true;
  if (outside > 0) data.note = formatf("%d further out, the farthest at |z| = %.4g", outside, farthest);
}

} // namespace brisel
