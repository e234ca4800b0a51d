// Reading, zooming and taking away what a plot window shows, with mouse and keys.
#include "gui/main_window/current_plot.h"
#include "gui/main_window/printing.h"
#include "tests/gui/main_window/workstation_fixture.h"

#include "engine/analysis/plot_arrays.h"

#include <QClipboard>
#include <QMimeData>
#include <QPrinter>
#include <QRegularExpression>
#include <QWheelEvent>

namespace brisel {
namespace {

class PlotWindowTest : public WorkstationTest {
protected:
  void SetUp() override {
    WorkstationTest::SetUp();
    design_lowpass();
  }

  static QPoint middle(const cBriselMdiChild &child) {
    const PlotLayout &l = child.last_layout();
    return {static_cast<int>((l.left + l.right) / 2), static_cast<int>((l.top + l.bottom) / 2)};
  }
  static void drag_right(cBriselMdiChild &child, QPoint from, QPoint to) {
    QTest::mousePress(&child, Qt::RightButton, {}, from);
    // QTest's own mouseMove carries no buttons.
    for (const QPoint at : {(from + to) / 2, to}) {
      QMouseEvent move(QEvent::MouseMove, at, child.mapToGlobal(at), Qt::NoButton, Qt::RightButton, Qt::NoModifier);
      QApplication::sendEvent(&child, &move);
    }
    child.grab(); // with the rubber band
    QTest::mouseRelease(&child, Qt::RightButton, {}, to);
    child.grab();
  }
  static void turn_wheel(cBriselMdiChild &child, QPoint at, int notches) {
    QWheelEvent event(at, child.mapToGlobal(at), {}, {0, 120 * notches}, Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(&child, &event);
    child.grab();
  }
};

TEST_F(PlotWindowTest, CursorReadsTheValueUnderTheMouse) {
  cBriselMdiChild &child = plot(PlotKind::log_magnitude);
  QTest::mouseClick(&child, Qt::LeftButton, {}, middle(child));
  ASSERT_TRUE(child.cursor_place());
  EXPECT_EQ(child.cursor_place()->index, -1);
  EXPECT_NEAR(child.cursor_place()->x, 2000, 20) << "half way to 4000 Hz, to a pixel";
  QTest::mouseClick(&child, Qt::LeftButton, {}, {1, 1});
  EXPECT_FALSE(child.cursor_place()) << "outside the axes";
}

TEST_F(PlotWindowTest, SnapPutsTheCursorOnTheNearestComputedPoint) {
  cBriselMdiChild &child = plot(PlotKind::magnitude);
  menu_item("Snap to &Grid")->trigger();
  EXPECT_TRUE(window->snap_to_grid());
  QTest::mouseClick(&child, Qt::LeftButton, {}, middle(child));
  ASSERT_TRUE(child.cursor_place());
  const int index = child.cursor_place()->index;
  ASSERT_GE(index, 0);
  EXPECT_EQ(child.cursor_place()->y, plot_arrays.magnitude[static_cast<std::size_t>(index)]);
}

TEST_F(PlotWindowTest, ArrowKeysMoveTheCursorAlongTheCurve) {
  cBriselMdiChild &child = plot(PlotKind::log_magnitude);
  QTest::keyClick(&child, Qt::Key_Right);
  ASSERT_TRUE(child.cursor_place());
  const int start = child.cursor_place()->index;
  const struct {
    Qt::Key key;
    Qt::KeyboardModifiers modifiers;
    int way;
  } rows[] = {{Qt::Key_Right, Qt::NoModifier, 1},       {Qt::Key_Left, Qt::NoModifier, -1},
              {Qt::Key_Right, Qt::ControlModifier, 10}, {Qt::Key_PageUp, Qt::NoModifier, -10},
              {Qt::Key_Up, Qt::NoModifier, 1},          {Qt::Key_Down, Qt::NoModifier, -1}};
  int at = start;
  for (const auto &row : rows) {
    QTest::keyClick(&child, row.key, row.modifiers);
    ASSERT_TRUE(child.cursor_place());
    EXPECT_EQ(child.cursor_place()->index, at += row.way) << row.key;
  }
  for (int i = 0; i < 200; i++) QTest::keyClick(&child, Qt::Key_PageDown);
  EXPECT_EQ(child.cursor_place()->index, plot_arrays.frequency_count - 1) << "stops at the end";
}

TEST_F(PlotWindowTest, RightDragZoomsAndThreeWaysLeadBack) {
  cBriselMdiChild &child = plot(PlotKind::log_magnitude);
  const Range whole = child.last_layout().x_axis.range;
  const auto zoom = [&] {
    const QPoint from = middle(child) - QPoint(41, 30), to = middle(child) + QPoint(37, 30);
    child.grab(); // of what zooming back left
    const PlotLayout before = child.last_layout();
    drag_right(child, from, to);
    ASSERT_TRUE(child.is_zoomed());
    // Exactly the rectangle: no widening to round values.
    const PlotLayout &after = child.last_layout();
    EXPECT_EQ(after.x_axis.range, (Range{before.x_map().value(from.x()), before.x_map().value(to.x())}));
    EXPECT_EQ(after.y_axis.range, (Range{before.y_map().value(to.y()), before.y_map().value(from.y())}));
    take_screenshot(child, "zoomed");
  };
  zoom();
  QTest::keyClick(&child, Qt::Key_Escape);
  EXPECT_FALSE(child.is_zoomed());
  child.grab();
  EXPECT_EQ(child.last_layout().x_axis.range, whole);
  zoom();
  QTest::mouseDClick(&child, Qt::LeftButton, {}, middle(child));
  EXPECT_FALSE(child.is_zoomed());
  zoom();
  window->Filter_StartDesign();
  EXPECT_FALSE(child.is_zoomed()) << "new responses are shown whole";
}

TEST_F(PlotWindowTest, WheelZoomsAtThePointer) {
  cBriselMdiChild &child = plot(PlotKind::step);
  const QPoint at = middle(child) + QPoint(30, -20);
  const double before = child.last_layout().x_map().value(at.x());
  const Range whole = child.last_layout().x_axis.range;
  turn_wheel(child, at, 3);
  ASSERT_TRUE(child.is_zoomed());
  const PlotLayout &l = child.last_layout();
  EXPECT_LT(l.x_axis.range[1] - l.x_axis.range[0], whole[1] - whole[0]);
  double width = l.x_axis.range[1] - l.x_axis.range[0];
  // The frame itself moves by as much as the labels get longer.
  EXPECT_NEAR(l.x_map().value(at.x()), before, 0.1 * width);
  for (int turn = 0; turn < 5; turn++) { // single notches go on, too
    for (int notch = 0; notch < 4; notch++) turn_wheel(child, at, 1);
    EXPECT_LT(l.x_axis.range[1] - l.x_axis.range[0], 0.7 * width);
    width = l.x_axis.range[1] - l.x_axis.range[0];
  }
}

TEST_F(PlotWindowTest, CopyGivesAPictureAndTheData) {
  for (int kind = 0; kind < plot_kind_count; kind++) {
    cBriselMdiChild &child = plot(static_cast<PlotKind>(kind));
    QTest::keyClick(&child, Qt::Key_C, Qt::ControlModifier);
    const QMimeData *content = QApplication::clipboard()->mimeData();
    const PlotData shown = child.data();
    EXPECT_FALSE(qvariant_cast<QImage>(content->imageData()).isNull()) << kind;
    const QStringList lines = content->text().split('\n', Qt::SkipEmptyParts);
    const auto points = static_cast<PlotKind>(kind) == PlotKind::pole_zero
                            ? shown.poles.size() + shown.zeros.size() +
                                  static_cast<std::size_t>(shown.origin_poles + shown.origin_zeros)
                            : shown.curve.y.size();
    ASSERT_EQ(static_cast<std::size_t>(lines.size()), points + 1) << kind;
    if (static_cast<PlotKind>(kind) != PlotKind::pole_zero) {
      const QStringList last = lines.last().split('\t');
      EXPECT_EQ(last[0].toDouble(), shown.curve.x_value(points - 1)) << kind;
      EXPECT_EQ(last[1].toDouble(), shown.curve.y.back()) << kind;
    }
  }
}

TEST_F(PlotWindowTest, SavesPicturesOfThreeKinds) {
  const struct {
    const char *typed, *written, *begins;
  } rows[] = {
      {"curve", "curve.png", "\x89PNG"}, {"curve.svg", "curve.svg", "<?xml"}, {"curve.pdf", "curve.pdf", "%PDF"}};
  for (const auto &row : rows) {
    dialogs.file_names = {at(row.typed)};
    plot(PlotKind::phase).save_picture();
    EXPECT_TRUE(folder.read(row.written).starts_with(row.begins)) << row.typed;
  }
  dialogs.file_names = {at("missing/curve.png")};
  plot(PlotKind::phase).save_picture();
  EXPECT_FALSE(folder.files().contains("missing/curve.png"));
}

TEST_F(PlotWindowTest, PrintsOnePageForEachSelectedPlotAndLeavesTheScreenColours) {
  const QImage before = plot(PlotKind::magnitude).grab().toImage();
  const struct {
    unsigned mask;
    int pages;
  } rows[] = {{0x7f, 7}, {1, 1}, {0x48, 2}};
  for (const auto &row : rows) {
    QPrinter printer(QPrinter::HighResolution);
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(QString::fromStdString(folder.path("plots.pdf")));
    EXPECT_TRUE(print_plots_on(printer, row.mask));
    const QString pdf = QString::fromLatin1(folder.read("plots.pdf").c_str(), folder.read("plots.pdf").size());
    EXPECT_EQ(pdf.count(QRegularExpression("/Type\\s*/Page\\b(?!s)")), row.pages) << row.mask;
  }
  EXPECT_EQ(plot(PlotKind::magnitude).grab().toImage(), before);
  QPrinter nowhere;
  nowhere.setOutputFormat(QPrinter::PdfFormat);
  nowhere.setOutputFileName("/no/such/folder/plots.pdf");
  EXPECT_FALSE(print_plots_on(nowhere, 1));
}

TEST_F(PlotWindowTest, WindowsWithoutSizeAreDrawnAndUsed) {
  for (int kind = 0; kind < plot_kind_count; kind++) {
    cBriselMdiChild &child = *window->plot_window(static_cast<PlotKind>(kind));
    child.setMinimumSize(0, 0);
    for (const QSize size : {QSize(1, 1), QSize(30, 2), QSize(3, 200), QSize(0, 0)}) {
      QImage image(size.expandedTo({1, 1}), QImage::Format_RGB32);
      child.setFixedSize(size);
      child.render(&image);
      QTest::mouseClick(&child, Qt::LeftButton, {}, {0, 0});
      drag_right(child, {0, 0}, {20, 20});
      turn_wheel(child, {0, 0}, 1);
      QTest::keyClick(&child, Qt::Key_Right);
    }
    EXPECT_FALSE(child.is_zoomed()) << kind;
  }
}

TEST_F(WorkstationTest, WithoutADesignPlotsStayBlankAndIgnoreTheMouse) {
  cBriselMdiChild &child = *window->plot_window(PlotKind::magnitude);
  const QImage blank = child.grab().toImage();
  QTest::mouseClick(&child, Qt::LeftButton, {}, child.rect().center());
  QTest::keyClick(&child, Qt::Key_Right);
  QTest::keyClick(&child, Qt::Key_C, Qt::ControlModifier);
  EXPECT_FALSE(child.cursor_place());
  EXPECT_EQ(child.grab().toImage(), blank);
  EXPECT_EQ(blank.pixelColor(3, 3), Qt::black);
  EXPECT_TRUE(dialogs.messages.isEmpty());
}

} // namespace
} // namespace brisel
