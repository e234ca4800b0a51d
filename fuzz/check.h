// check.h - what has to be true of every input.
#pragma once

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <span>

inline void require(bool condition, const char *what) {
  if (condition) return;
  std::fprintf(stderr, "not true: %s\n", what);
  std::abort();
}

inline bool all_finite(std::span<const double> values) {
  for (const double value : values)
    if (!std::isfinite(value)) return false;
  return true;
}
