#include "gui/main_window/printing.h"

#include "gui/dialogs/cSelectPlotsDialogImpl.h"
#include "gui/main_window/brisel_app.h"
#include "gui/main_window/current_plot.h"
#include "gui/plots/plot_painter.h"

#include <QMessageBox>
#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>

namespace brisel {

bool print_plots_on(QPrinter &printer, unsigned mask) {
  QPainter painter;
  if (!painter.begin(&printer)) return false;
  const PlotStyle style = mono_plot_style(display_settings);
  for (int kind = 0; kind < plot_kind_count; kind++) {
    if (!(mask >> kind & 1)) continue;
    PlotLayout layout;
    draw_plot(painter, printed_place(printer), current_plot(static_cast<PlotKind>(kind)), style, layout);
    const bool last = mask >> (kind + 1) == 0;
    if (!last && !printer.newPage()) return false;
  }
  return painter.end();
}

void print_plots(cBriselApp &window) {
  cSelectPlotsDialogImpl selection(&window, "Print Selection");
  if (selection.exec() != QDialog::Accepted || selection.mask() == 0) return;
  QPrinter printer(QPrinter::HighResolution);
  printer.setDocName("Brisel");
  printer.setPageOrientation(QPageLayout::Landscape);
  if (!workplace_names.pp_pname.empty()) printer.setPrinterName(QString::fromStdString(workplace_names.pp_pname));
  QPrintDialog set_up(&printer, &window);
  if (set_up.exec() != QDialog::Accepted) return;
  if (printer.outputFormat() == QPrinter::NativeFormat) workplace_names.pp_pname = printer.printerName().toStdString();
  window.show_state("Printing ... ");
  if (!print_plots_on(printer, selection.mask()))
    QMessageBox::critical(&window, "Brisel", "Unable to print to selected printer.");
}

} // namespace brisel
