// optimal_length.h - how many taps an equiripple or linear-programming filter needs.
//
// [Herrmann73] O. Herrmann, L. R. Rabiner, D. S. K. Chan, Practical design rules for optimum finite impulse response
// lowpass digital filters, Bell Syst. Tech. J. 52 (1973). [Kaiser74] J. F. Kaiser, Nonrecursive digital filter design
// using the I0-sinh window function, Proc. IEEE Symp. Circuits and Systems (1974).
// [Bernstein26] S. Bernstein, Leçons sur les propriétés extrémales et la meilleure approximation des fonctions
// analytiques d'une variable réelle, Paris (1926).
#pragma once

#include "engine/core/code_tables.h"
#include "engine/core/records.h"

namespace brisel {

/// Taps between a passband that may deviate by `passband` and a stopband that may by `stopband`, `width` cycles per
/// sample apart. Not rounded. [Herrmann73] where its fit holds, else [Kaiser74].
double herrmann_length(double passband, double stopband, double width);
/// [Kaiser74]. Not rounded.
double kaiser_length(double passband, double stopband, double width);

/// Estimated number of taps for a specification whose sampling frequency is 2 pi, 3 to 32767. Odd, but even where an
/// odd antisymmetric response would have its zero inside a band, and 3 more than a multiple of 4 for a halfband filter.
/// `entered_width` as for transition_width.
int optimal_length(const FilterSpec &spec, FirSymmetry symmetry, double entered_width = 0);

} // namespace brisel
