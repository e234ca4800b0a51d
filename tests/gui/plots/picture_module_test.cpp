#include "engine/core/display_defaults.h"
#include "gui/plots/picture_module.h"
#include "tests/gui/plots/example_plots.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>

namespace brisel {
namespace {

class PictureModule : public testing::Test {
protected:
  PictureModule() {
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // a child of its own, where the toolkit has not run yet
    set_display_defaults(display);
    for (int kind = 0; kind < plot_kind_count; kind++) job.plots.push_back(example.plot(static_cast<PlotKind>(kind)));
    job.state = &example.state;
    job.display = &display;
    job.problem = "A filter";
    job.size = {500, 300, 1};
  }
  ExamplePlots example{lowpass_taps(31, 0.3), 8000, 201};
  DisplaySettings display{};
  PictureJob job;
};

TEST_F(PictureModule, ReturnsEveryPictureAskedFor) {
  job.png = job.svg = job.pdf = true;
  PictureResult result;
  ASSERT_TRUE(render_pictures(PICTURE_MODULE_FOLDER, job, result)) << result.error;
  ASSERT_EQ(result.pictures.size(), 15u);
  EXPECT_EQ(result.pictures[2].name, "log-magnitude.png");
  EXPECT_EQ(result.pictures[2].bytes.substr(1, 3), "PNG");
  EXPECT_EQ(result.pictures[13].name, "pole-zero.svg");
  EXPECT_EQ(result.pictures[14].name, "plots.pdf");
  EXPECT_EQ(result.pictures[14].bytes.substr(0, 5), "%PDF-");

  PictureResult again;
  ASSERT_TRUE(render_pictures(PICTURE_MODULE_FOLDER, job, again));
  for (std::size_t i = 0; i < again.pictures.size(); i++)
    EXPECT_EQ(again.pictures[i].bytes, result.pictures[i].bytes) << again.pictures[i].name;
}

TEST_F(PictureModule, WorksInABareSurroundingAndSaysNothing) {
  job.png = true;
  const auto draw = [&] {
    for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "XDG_RUNTIME_DIR", "HOME", "XDG_CACHE_HOME", "LANG"})
      unsetenv(name);
    setenv("LC_ALL", "C", 1);
    PictureResult result;
    const bool good = render_pictures(PICTURE_MODULE_FOLDER, job, result);
    const bool kept = std::string(std::setlocale(LC_ALL, nullptr)) == "C";
    std::exit(good && kept && result.pictures.size() == 7 ? 0 : 1);
  };
  EXPECT_EXIT(draw(), testing::ExitedWithCode(0), "^$");
}

TEST_F(PictureModule, TheScreenOfTheUserHasNoSay) {
  job.png = true;
  job.plots.resize(1);
  const std::string file = testing::TempDir() + "brisel-picture-of-a-large-screen.png";
  const auto draw = [&] {
    setenv("QT_SCALE_FACTOR", "2", 1);
    setenv("QT_FONT_DPI", "150", 1);
    PictureResult result;
    const bool good = render_pictures(PICTURE_MODULE_FOLDER, job, result);
    std::ofstream(file, std::ios::binary) << result.pictures.at(0).bytes;
    std::exit(good ? 0 : 1);
  };
  EXPECT_EXIT(draw(), testing::ExitedWithCode(0), "");
  PictureResult plain;
  ASSERT_TRUE(render_pictures(PICTURE_MODULE_FOLDER, job, plain));
  std::ifstream in(file, std::ios::binary);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), plain.pictures.at(0).bytes);
  std::filesystem::remove(file);
}

TEST_F(PictureModule, AMachineWithoutFontsGetsOneLine) {
  job.pdf = true;
  const auto folder = std::filesystem::temp_directory_path() / ("brisel-no-fonts-" + std::to_string(getpid()));
  std::filesystem::create_directories(folder);
  std::ofstream(folder / "fonts.conf")
      << "<?xml version=\"1.0\"?><!DOCTYPE fontconfig SYSTEM \"fonts.dtd\"><fontconfig>"
         "<dir>/nonexistent</dir></fontconfig>";
  const auto draw = [&] {
    setenv("FONTCONFIG_FILE", (folder / "fonts.conf").c_str(), 1);
    PictureResult result;
    const bool good = render_pictures(PICTURE_MODULE_FOLDER, job, result);
    std::cerr << result.error;
    std::exit(!good && result.pictures.empty() ? 0 : 1);
  };
  EXPECT_EXIT(draw(), testing::ExitedWithCode(0), "^no fonts are installed[^\n]*$");
  std::filesystem::remove_all(folder);
}

TEST_F(PictureModule, AMissingModuleIsNamed) {
  PictureResult result;
  EXPECT_FALSE(render_pictures("/nonexistent", job, result));
  EXPECT_NE(result.error.find("brisel_pictures.so is neither in /nonexistent nor in"), std::string::npos);
}

} // namespace
} // namespace brisel
