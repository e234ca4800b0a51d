// system_lists.h - an entered system as the lists of numbers that a person writes down for it.
#pragma once

#include "engine/files/system_check.h"

#include <vector>

namespace brisel {

inline constexpr int max_ratio_order = 160; // what a system analysis file can hold
inline constexpr int min_lattice_order = 2;

using NumberRows = std::vector<std::vector<double>>;

///                  first                                       second
/// ratio            numerator, highest power first              denominator
/// poles and zeros  zeros: real and imaginary part, one row     poles
///                  for a conjugate pair
/// sections         b0 b1 b2 a0 a1 a2 (in s: b2 b1 b0 ...)      -
/// lattice          gamma 0 .. order + lead                     kappa 1 .. order
/// FIR 7 and 8      the first half of the taps, h(0) first      -
/// FIR 9 and 10     all taps                                    -
struct SystemLists {
  double sample_rate = 0; // radians per second
  double gain = 1;
  int taps = 0; // of a FIR system
  NumberRows first, second;
};

/// The lists of an entry. Ladders have none.
SystemLists lists_of(Domain domain, InputOption option, SystemEntry entry);

/// Fills the entry of the option, after which the lists are its lists again. What does not fit into the entry, and what
/// check_system() says of it, is returned.
std::optional<SystemComplaint> enter_lists(Domain domain, InputOption option, const SystemLists &lists,
                                           SystemEntries &entries);

/// From descending powers of z with orders of their own to powers of z^-1 up to the same one.
void align_digital_ratio(RatioEntry &entry);
/// Powers of z^-1, or of s, that the sections have together.
std::int16_t order_of_sections(Domain domain, const SectionEntry &entry);

/// How a pole or zero is written down. An angle in hertz is that of the digital frequency.
enum class Coordinates { real_and_imaginary, radius_and_radians, radius_and_hertz };
/// A row of poles or zeros in other coordinates and back. Real values have an angle of 0 and a radius with their sign;
/// an angle of half a turn, to the digits that are shown of it, is read as real too.
std::vector<double> to_coordinates(const std::vector<double> &row, Coordinates coordinates, double sample_rate);
std::vector<double> from_coordinates(const std::vector<double> &row, Coordinates coordinates, double sample_rate);

/// What a row that is added to the sections begins as: it changes nothing.
std::vector<double> neutral_section(Domain domain, InputOption option);

/// A small system to begin with, at a sampling frequency of 8000 in the user's unit.
SystemLists example_lists(Domain domain, InputOption option, double unit_factor);

} // namespace brisel
