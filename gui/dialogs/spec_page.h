// spec_page.h - pages that fill a filter specification: their fields are rows of a table, their checks the engine's.
#pragma once

#include "engine/core/spec_check.h"
#include "gui/dialogs/sequence_page.h"

#include <vector>

namespace brisel {

/// Labels name the units of ripples.
enum class FieldUnit { frequency, plain };

struct SpecRow {
  QLineEdit *edit;
  SpecField field;
  int index = 0;
  FieldUnit unit = FieldUnit::plain;
};

class SpecPage : public SequencePage {
protected:
  /// `whole` says that the page completes a specification; on the first of two pages only its own fields are checked.
  SpecPage(QWidget *parent, const char *help_page, bool whole = true);

  /// Shows the fields. `with_units` puts the unit behind frequencies.
  void bind(std::vector<SpecRow> rows, bool with_units = true);

  void read() override;
  void store() override;
  /// Values that are no numbers in line edits, read before the numbers.
  virtual void read_more(FilterSpec &) {}
  /// The widget for a complaint about a field without a row.
  virtual QWidget *widget_of(const SpecComplaint &) { return nullptr; }

  FilterSpec typed; // a copy of the current specification, with start values in a fresh session

private:
  std::vector<SpecRow> rows;
  FilterSpec before; // as it was when the page opened: fields that were not touched keep all their digits
  bool whole;
};

/// What the pages of a type offer before anything was entered: an audio filter at a sampling frequency of 8000.
/// `unit_factor` makes radians per second of it.
FilterSpec starting_spec(int type, double unit_factor);

} // namespace brisel
