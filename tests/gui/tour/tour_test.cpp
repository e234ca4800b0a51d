// tour_test.cpp - every command and every dialog, with hostile text in every field, every button pressed, and then
// random keys and clicks over everything. Nothing may crash, hang or leave a record that is not sound.
#include "engine/analysis/plot_arrays.h"
#include "tests/gui/main_window/workstation_fixture.h"
#include "tests/gui/tour/dialog_rules.h"

#include <QComboBox>
#include <QLineEdit>
#include <QMdiSubWindow>
#include <QPointer>
#include <QPrintDialog>
#include <QSpinBox>
#include <QTableWidget>
#include <QTextBrowser>
#include <QToolBar>

#include <cmath>
#include <random>
#include <set>

namespace brisel {
namespace {

#ifdef BRISEL_SANITIZED
constexpr double slower = 8;
#else
constexpr double slower = 1;
#endif
constexpr double longest_gap_s = 0.5 * slower; // of this thread's processor time, whatever else the machine does

double thread_seconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

/// Watches how long the event loop does not come round.
class StallWatch {
public:
  StallWatch() {
    QObject::connect(&timer, &QTimer::timeout, [this] { come_round(); });
    timer.start(5);
  }
  void come_round() {
    const double now = thread_seconds();
    if (now - last > longest) {
      longest = now - last;
      during = doing;
    }
    last = now;
  }
  QString doing;
  double longest = 0;
  QString during;

private:
  QTimer timer;
  double last = thread_seconds();
};

template <class Values> bool all_finite(const Values &values, std::size_t count) {
  return std::all_of(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(count),
                     [](double v) { return std::isfinite(v); });
}

bool is_sound(const SectionEntry &s) {
  bool good = s.section_count >= 0 && s.section_count <= max_sections && std::isfinite(s.gain);
  for (std::size_t i = 0; good && i < static_cast<std::size_t>(s.section_count); i++)
    good = all_finite(s.numerators[i], 3) && all_finite(s.denominators[i], 3);
  return good;
}

/// An invalid record is nothing to look at; a valid one holds numbers only.
bool record_is_sound() {
  const DesignRecord &r = design_record;
  if (!r.valid) return true;
  if (r.loaded.sampling_frequency < 0 || !std::isfinite(r.loaded.sampling_frequency)) return false;
  if (is_fir_result())
    return r.fir.length > 0 && r.fir.length <= max_taps &&
           all_finite(r.fir.coeff, static_cast<std::size_t>(r.fir.length)) && std::isfinite(r.fir.gain);
  return is_sound(r.z.cascade) && is_sound(r.z_quantized.cascade) && is_sound(r.s_unnormalized.cascade) &&
         plot_arrays.frequency_count <= max_frequency_points;
}

const QStringList &hostile_texts() {
  static const QStringList texts{QString(100000, '7'),
                                 QString(100000, 'x'),
                                 "NaN",
                                 "inf",
                                 "-inf",
                                 "1e999",
                                 "-0",
                                 "0x1p3",
                                 "1,5",
                                 "%n%s%n%s",
                                 "<b>bold</b><img src=/etc/passwd>",
                                 QString("\x01\x1b[31m\r\n\t\x7f"),
                                 QString::fromUtf8("\U0001F39B\u202E٣"),
                                 "'; DROP TABLE taps; --",
                                 "$(touch hacked) `touch hacked` \"|",
                                 "../../../etc/passwd",
                                 "-1e308",
                                 "1e-320",
                                 ""};
  return texts;
}

/// Those that no number field may let through.
bool is_no_number(const QString &text) {
  bool number = false;
  text.trimmed().toDouble(&number);
  return text.isEmpty() || text.contains("nf") || text.contains("aN") || text == "1e999" || !number;
}

QPushButton *accepting_button(const QDialog &dialog) {
  for (const char *name : {"pNext_Button", "pOk_Button", "pAccept_Button"})
    if (auto *button = dialog.findChild<QPushButton *>(name)) return button;
  return nullptr;
}

class TourTest : public WorkstationTest {
protected:
  void SetUp() override {
    WorkstationTest::SetUp();
    set_start_values();
    setenv("HOME", folder.path("").c_str(), 1);
  }

  /// Hostile text into every field. Afterwards the fields are as they were.
  void fill(QDialog &dialog) {
    QPushButton *accept = accepting_button(dialog);
    const bool was_right = accept && accept->isEnabled();
    const bool names = dialog.objectName() == "cUserInfoDialog";
    for (QLineEdit *edit : dialog.findChildren<QLineEdit *>()) {
      if (!edit->isEnabled() || edit->isReadOnly() || !edit->isVisible()) continue;
      const QString before = edit->text();
      const bool optional = edit->parentWidget() && qobject_cast<QSpinBox *>(edit->parentWidget());
      for (const QString &text : hostile_texts()) {
        watch.come_round(); // each text by itself: hundreds of them come in one turn of the event loop
        edit->setText(text);
        for (const QLabel *label : dialog.findChildren<QLabel *>()) {
          EXPECT_FALSE(label->textFormat() != Qt::PlainText && Qt::mightBeRichText(label->text()));
        }
        EXPECT_FALSE(Qt::mightBeRichText(edit->toolTip()));
        if (!accept || names || optional || text.isEmpty() || !is_no_number(text)) continue;
        EXPECT_FALSE(accept->isEnabled()) << dialog.objectName().toStdString() << " takes "
                                          << text.left(40).toStdString() << " in " << edit->objectName().toStdString();
      }
      edit->setText(before);
    }
    for (QTableWidget *table : dialog.findChildren<QTableWidget *>())
      for (int column = 0; table->rowCount() > 0 && column < table->columnCount(); column++) {
        QTableWidgetItem *item = table->item(0, column);
        if (!item || !(item->flags() & Qt::ItemIsEditable)) continue;
        const QString before = item->text();
        for (const QString &text : hostile_texts()) {
          watch.come_round();
          item->setText(text.left(2000));
          if (accept && is_no_number(text.left(2000))) {
            EXPECT_FALSE(accept->isEnabled()) << dialog.objectName().toStdString() << text.left(40).toStdString();
          }
        }
        item->setText(before);
      }
    EXPECT_EQ(accept && accept->isEnabled(), was_right) << dialog.objectName().toStdString();
  }

  void check_rules(const QDialog &dialog) {
    const QStringList faults = all_faults(dialog);
    EXPECT_TRUE(faults.isEmpty()) << dialog.objectName().toStdString() << ": " << faults.join("\n").toStdString();
  }

  /// What the tour does with a dialog each time the event loop comes round: look at it once, then press the next
  /// button that nobody pressed yet, and at last leave it.
  void visit(QDialog &dialog) {
    const QString name = dialog.objectName();
    watch.doing = name;
    if (qobject_cast<QPrintDialog *>(&dialog)) return dialog.reject();
    for (QDialog *help : dialog.findChildren<QDialog *>()) {
      if (help->windowTitle() != "Help") continue;
      EXPECT_TRUE(help->findChild<QTextBrowser *>()->toPlainText().contains("Example")) << name.toStdString();
      helped.insert(name);
      help->close();
    }
    if (&dialog != visited) {
      visited = &dialog;
      presses = 0;
      if (seen.insert(name).second) {
        check_rules(dialog);
        fill(dialog);
      }
      return;
    }
    for (QAbstractButton *button : dialog.findChildren<QAbstractButton *>()) {
      if (!button->isEnabled() || !button->isVisible() || button->objectName().startsWith("qt_")) continue;
      if (!pressed.insert(name + "." + button->objectName()).second) continue;
      fresh = true;
      if (++presses > 40) break;
      return press(button);
    }
    QPushButton *accept = accepting_button(dialog);
    if (accept && accept->isEnabled() && ++presses < 60)
      press(accept);
    else
      dialog.reject();
  }
  /// From the event loop: a button may open another dialog, and the one who answers has to stay free for it.
  void press(QAbstractButton *button) { QTimer::singleShot(0, button, &QAbstractButton::click); }

  /// Each command of the tour finds the same result.
  void load(const char *file, int method) {
    quantization_settings.quant = quantization_settings.qtype = 1;
    quantization_settings.ibit = 16;
    if (file && design_record.valid && design_record.design_counter == loaded) return;
    design_record.valid = 0;
    if (!file) return;
    design_state.DesignOrAnalysisType = static_cast<std::int8_t>(method);
    const auto pages = std::exchange(dialogs.answer, DialogAnswerer().answer);
    window->load_file(QString::fromStdString(example(file)));
    dialogs.answer = pages;
    loaded = design_record.design_counter;
  }

  /// The first and every second time a file of the test's folder, so that Cancel has its turn, too; to be read: an
  /// example.
  QString name_a_file(const QFileDialog &files) {
    if (++named % 2 == 0 && !titles.insert(files.windowTitle()).second) return {};
    if (files.acceptMode() == QFileDialog::AcceptSave) return at("tour" + std::to_string(named));
    for (const auto &[kind, name] : {std::pair{"*.spc", "highpass.spc"}, {"*.inp", "lattice.inp"}})
      if (files.nameFilters().first().contains(kind)) return QString::fromStdString(example(name));
    return {};
  }

  QList<QAction *> commands() {
    QList<QAction *> all;
    for (QMenu *menu : window->menuBar()->findChildren<QMenu *>())
      if (menu->title() != "&Recent Files") all += menu->actions();
    all += window->findChild<QToolBar *>()->actions();
    all.removeIf([](QAction *a) { return a->menu() || a->isSeparator() || a->text() == "E&xit ..."; });
    return all;
  }

  StallWatch watch;
  std::set<QString> seen, helped, pressed, titles;
  QPointer<QDialog> visited;
  int presses = 0;
  int named = 0;
  int loaded = 0;
  bool fresh = false;
};

TEST_F(TourTest, EveryCommandDialogFieldAndButton) {
  dialogs.answer = [this](QDialog &dialog) { visit(dialog); };
  dialogs.name_file = [this](const QFileDialog &files) { return name_a_file(files); };
  dialogs.button = QMessageBox::Yes;
  dialogs.resume(1);
  const struct {
    const char *what, *file;
    int method;
  } results[] = {{"nothing", nullptr, 0},
                 {"a FIR design", "lowpass.spc", code(DesignMethod::window)},
                 {"an IIR design", "bandpass.spc", code(DesignMethod::iir)},
                 {"an entered system", "biquads.inp", code(DesignMethod::z_analysis)},
                 {"an analog system", "analog-butterworth.inp", code(DesignMethod::s_analysis)}};
  for (const auto &row : results) {
    design_record.valid = 0;
    std::set<QString> finished;
    for (int pass = 0; pass < 12; pass++) {
      Q_EMIT window->menuBar()->actions().last()->menu()->aboutToShow(); // the Window menu
      for (const QPointer<QAction> action : commands()) {
        if (!action) continue; // of a menu that was built anew meanwhile
        const QString text = action->text();
        if (finished.contains(text)) continue;
        load(row.file, row.method);
        fresh = false;
        watch.doing = text;
        action->trigger();
        QCoreApplication::processEvents();
        if (!fresh) finished.insert(text); // no dialog of this command has a button left
        ASSERT_TRUE(window->isVisible()) << text.toStdString();
        ASSERT_TRUE(record_is_sound()) << row.what << ": " << text.toStdString();
        for (QWidget *top : QApplication::topLevelWidgets())
          if (top != window.get() && top->isVisible() && !qobject_cast<QMenu *>(top)) top->close();
      }
    }
  }
  EXPECT_FALSE(folder.files().contains("hacked"));
  EXPECT_LT(watch.longest, longest_gap_s) << "during " << watch.during.toStdString();
  EXPECT_GE(seen.size(), 25u);
  for (const QString &name : seen) EXPECT_TRUE(helped.contains(name)) << name.toStdString() << " has no help";
  RecordProperty("dialogs", static_cast<int>(seen.size()));
  RecordProperty("buttons", static_cast<int>(pressed.size()));
}

/// Somebody without a plan at keyboard and mouse. Only files in the test's folder can be named.
class Monkey : public QObject {
public:
  Monkey(cBriselApp &app, const Workshop &work_folder, unsigned seed) : window(app), folder(work_folder), random(seed) {
    window.installEventFilter(this);
    connect(&timer, &QTimer::timeout, this, &Monkey::plan);
    timer.start(1);
  }
  void stop() { timer.stop(); }
  bool is_active() const { return timer.isActive(); }
  int acts = 0;
  QString doing;

protected:
  bool eventFilter(QObject *object, QEvent *event) override { // the window stays
    if (object != &window || event->type() != QEvent::Close) return false;
    event->ignore();
    return true;
  }

private:
  int below(int n) { return n <= 1 ? 0 : static_cast<int>(random() % static_cast<unsigned>(n)); }

  void plan() {
    // Acts come from the event loop: a dialog that one opens must not hold up the next.
    QTimer::singleShot(0, this, &Monkey::act);
  }

  void act() {
    if (!timer.isActive()) return;
    acts++;
    QWidget *modal = QApplication::activeModalWidget();
    if (auto *print = qobject_cast<QPrintDialog *>(modal)) return print->reject();
    if (auto *files = qobject_cast<QFileDialog *>(modal)) {
      if (below(3) == 0) return files->reject();
      static const char *const names[] = {"a.spc", "b.inp", "c.flt", "d.c", "e", "f.dat", "g.png"};
      files->selectFile(QString::fromStdString(folder.path(names[below(7)])));
      QMetaObject::invokeMethod(files, "accept");
      if (QApplication::activeModalWidget() == files) files->reject();
      return;
    }
    QWidget *target = QApplication::activePopupWidget();
    if (!target) target = modal ? modal : &window;
    doing = target->objectName() + " " + target->windowTitle();
    if (below(2))
      key(target);
    else
      mouse(target);
  }

  void key(QWidget *target) {
    static const Qt::Key plain[] = {Qt::Key_Tab,  Qt::Key_Return,   Qt::Key_Escape,  Qt::Key_Down,     Qt::Key_Up,
                                    Qt::Key_Left, Qt::Key_Right,    Qt::Key_Space,   Qt::Key_Delete,   Qt::Key_F5,
                                    Qt::Key_Home, Qt::Key_PageDown, Qt::Key_Backtab, Qt::Key_Backspace};
    QWidget *focus = QApplication::focusWidget();
    if (!QApplication::activePopupWidget() && focus && focus->window() == target->window()) target = focus;
    const int kind = below(10);
    if (kind < 4)
      QTest::keyClick(target, plain[below(static_cast<int>(std::size(plain)))]);
    else if (kind < 7)
      QTest::keyClick(target, static_cast<char>(" 0123456789.eE-+,%<nNxkHz"[below(25)]));
    else
      QTest::keyClick(target, static_cast<Qt::Key>(Qt::Key_A + below(26)),
                      kind < 9 ? Qt::AltModifier : Qt::ControlModifier);
  }

  void mouse(QWidget *target) {
    QList<QWidget *> places = target->findChildren<QWidget *>();
    places.removeIf([](QWidget *w) { return !w->isVisible() || w->size().isEmpty(); });
    QWidget *place = places.isEmpty() ? target : places[below(static_cast<int>(places.size()))];
    const QPoint at(below(place->width()), below(place->height()));
    switch (below(6)) {
    case 0:
      QTest::mouseDClick(place, Qt::LeftButton, {}, at);
      break;
    case 1: { // a drag with the right button, or a click
      const QPoint to(below(place->width()), below(place->height()));
      QPointer<QWidget> still_there = place;
      QTest::mousePress(place, Qt::RightButton, {}, at);
      QMouseEvent move(QEvent::MouseMove, to, place->mapToGlobal(to), Qt::NoButton, Qt::RightButton, {});
      if (still_there) QApplication::sendEvent(place, &move);
      if (still_there) QTest::mouseRelease(place, Qt::RightButton, {}, to);
      break;
    }
    case 2: {
      QWheelEvent turn(at, place->mapToGlobal(at), {}, QPoint(0, 120 * (below(9) - 4)), {}, {}, Qt::NoScrollPhase,
                       false);
      QApplication::sendEvent(place, &turn);
      break;
    }
    default:
      QTest::mouseClick(place, Qt::LeftButton, {}, at);
    }
  }

  cBriselApp &window;
  const Workshop &folder;
  std::mt19937 random;
  QTimer timer;
};

TEST_F(TourTest, RandomKeysAndClicks) {
  design_lowpass();
  const char *wanted = std::getenv("BRISEL_TOUR_SECONDS");
  const char *seeded = std::getenv("BRISEL_TOUR_SEED");
  const double seconds = wanted ? std::atof(wanted) : 5;
  const unsigned seed = seeded ? static_cast<unsigned>(std::atoi(seeded)) : 20260;
  dialogs.pause();
  {
    Monkey monkey(*window, folder, seed);
    // In the event loop, because the last dialogs may still be open: they are answered with Cancel.
    QTimer::singleShot(static_cast<int>(1000 * seconds), window.get(), [&] {
      monkey.stop();
      dialogs.answer = [](QDialog &dialog) { dialog.reject(); };
      dialogs.resume();
    });
    auto *stop = window->findChild<QPushButton *>("Stop_Button");
    while (monkey.is_active() || QApplication::activeModalWidget() || stop->isVisible()) {
      QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
      watch.doing = monkey.doing;
      ASSERT_TRUE(record_is_sound()) << "after " << monkey.acts << " acts, seed " << seed;
    }
    EXPECT_GT(monkey.acts, 100);
    RecordProperty("acts", monkey.acts);
  }
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
  EXPECT_TRUE(record_is_sound());
  EXPECT_LT(watch.longest, longest_gap_s) << "during " << watch.during.toStdString() << ", seed " << seed;
}

} // namespace
} // namespace brisel
