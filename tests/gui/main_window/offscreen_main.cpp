// offscreen_main.cpp - the tests of the workstation run its real windows without a display.
#include <gtest/gtest.h>

#include <QApplication>

#include <clocale>

int main(int argc, char **argv) {
  setenv("QT_QPA_PLATFORM", "offscreen", 1);
  testing::InitGoogleTest(&argc, argv);
  QApplication application(argc, argv);
  std::setlocale(LC_NUMERIC, "C");
  return RUN_ALL_TESTS();
}
