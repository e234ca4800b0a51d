// printing.h - plots on paper.
#pragma once

#include <cstdint>

class QPrinter;

namespace brisel {

class cBriselApp;

/// Asks which plots go to which printer and prints them, black on white whatever the screen shows.
void print_plots(cBriselApp &window);
/// One page a plot, bit k of `mask` for plot kind k. False when the printer cannot be opened or fails.
bool print_plots_on(QPrinter &printer, unsigned mask);

} // namespace brisel
