// true_exchange.h - the second exchange: the optimum between the points of a grid too, of any length.
//
// It starts from the extremal points of a filter of half the length, exchanges all points at once, looks for the peaks
// of the error where the last reference says that they are, and places its points between those of any grid. It does
// not stop because the deviation falls: one poor swap is no sign of the end.
//
// [Filip16] S.-I. Filip, A robust and scalable implementation of the Parks-McClellan algorithm for designing FIR
// filters, ACM Trans. Math. Software 43 (2016): the starting points.
#pragma once

#include "engine/fir/remez.h"

namespace brisel {

struct TrueOptimum {
  ExchangeResult exchange; // its points are case transformed
  int length = 0;          // taps: fewer than the plan's where the optimum of these would be lost in rounding
};
/// Error `none` is the optimum of `length` taps, to 1 % at least; `below_rounding` only that no filter is better by
/// more than rounding.
TrueOptimum true_exchange(const BandPlan &plan, const Progress &progress);

} // namespace brisel
