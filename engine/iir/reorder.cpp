#include "engine/iir/reorder.h"

#include "engine/analysis/pole_zero_form.h"
#include "engine/analysis/wide_ratio.h"

#include <algorithm>
#include <cmath>

namespace brisel {

using Complex = std::complex<double>;

static void swap_pairs(std::span<Complex> list, std::size_t i, std::size_t k) {
  std::swap(list[2 * i], list[2 * k]);
  std::swap(list[2 * i + 1], list[2 * k + 1]);
}

void order_pairs(PoleZeroEntry &entry) {
  const auto poles = std::span(entry.poles).first(pole_count(entry));
  const auto zeros = std::span(entry.zeros).first(zero_count(entry));
  const std::size_t pairs = poles.size() / 2;

  // Of two real values in a pair the one nearer to the circle speaks for it.
  auto radius = [&](std::size_t i) { return std::max(std::abs(poles[2 * i]), std::abs(poles[2 * i + 1])); };
  for (std::size_t i = 0; i < pairs; i++) {
    std::size_t smallest = i;
    for (std::size_t k = i + 1; k < pairs; k++)
      if (radius(k) < radius(smallest)) smallest = k;
    swap_pairs(poles, i, smallest);
  }

  auto distance = [&](std::size_t pole, std::size_t zero) {
    return std::min(std::abs(poles[2 * pole] - zeros[2 * zero]), std::abs(poles[2 * pole] - zeros[2 * zero + 1]));
  };
  for (std::size_t i = std::min(pairs, zeros.size() / 2); i-- > 0;) {
    std::size_t nearest = i;
    for (std::size_t k = i; k-- > 0;)
      if (distance(i, k) < distance(i, nearest)) nearest = k;
    swap_pairs(zeros, i, nearest);
  }
}

bool reorder_sections(SectionEntry &cascade, PoleZeroEntry &work, int &dropped_delay) {
  long double gain;
  if (!collect_roots(cascade, work, gain)) return false;
  // What the one list is shorter is filled with the origin: those are the delays that are dropped.
  std::vector<Complex> zeros(work.zeros.begin(), work.zeros.begin() + zero_count(work));
  std::vector<Complex> poles(work.poles.begin(), work.poles.begin() + pole_count(work));
  dropped_delay = static_cast<int>(poles.size()) - static_cast<int>(zeros.size());
  const std::size_t order = std::max(zeros.size(), poles.size());
  zeros.resize(order);
  poles.resize(order);
  int none;
  if (!arrange_pairs(zeros) || !arrange_pairs(poles) || !store_roots(zeros, poles, work)) return false;
  work.gain = narrow(gain);
  order_pairs(work);
  return build_sections(Domain::z, work, gain, cascade, none);
}

void cancel_delays(SectionEntry &entry) {
  for (int k = 0; k < entry.section_count; k++) {
    Triple &n = entry.numerators[k], &d = entry.denominators[k];
    for (int places = 0; places < 2 && n[0] == 0 && d[0] == 0; places++)
      for (Triple *t : {&n, &d}) *t = {(*t)[1], (*t)[2], 0};
  }
}

} // namespace brisel
