#include "engine/core/setup_file.h"
#include "engine/core/start_up.h"
#include "tests/support/scripted_front_end.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

using namespace brisel;
namespace fs = std::filesystem;

namespace {

// An engine in a folder of its own.
struct Session {
  fs::path folder = fs::temp_directory_path() / ("brisel_setup_" + std::to_string(::getpid()));
  fs::path old = fs::current_path();
  ScriptedFrontEnd front;
  Session() {
    fs::create_directories(folder);
    fs::current_path(folder);
  }
  ~Session() {
    fs::current_path(old);
    fs::permissions(folder, fs::perms::owner_all);
    fs::remove_all(folder);
  }
  static std::string setup() {
    std::ifstream in("system.brisel");
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
  }
};

const std::string header = "Brisel System Setup File V6.1\n";

} // namespace

TEST(SetupFile, KeepsEveryKeyFromOneSessionToTheNext) {
  Session session;
  program_start();
  EXPECT_TRUE(setup_file_missing);
  EXPECT_EQ(quantization_settings.ibit, 16);
  quantization_settings.ibit = 24;
  design_state.ZTransformMethod = 2;
  plot_settings.nfpts = 777;
  workplace_names.user_name = "A. User: 5 %s";
  workplace_names.co_name = "";
  z_plot_on[1] = false;
  program_exit(ExitMode::save);

  const std::string text = Session::setup();
  std::istringstream lines(text);
  std::string line;
  std::getline(lines, line);
  EXPECT_EQ(line, "Brisel System Setup File V6.1");
  std::getline(lines, line);
  EXPECT_TRUE(line.starts_with("Program exits at ")) << line;
  int keys = 0;
  while (std::getline(lines, line)) {
    EXPECT_TRUE(line.starts_with("Brisel.")) << line;
    keys++;
  }
  EXPECT_EQ(keys, setup_key_count);
  EXPECT_NE(text.find("\nBrisel.ibit: 24 \n"), text.npos);
  EXPECT_NE(text.find("\nBrisel.user_name: 13 A. User: 5 %s\nBrisel.co_name: 0 \n"), text.npos);
  EXPECT_NE(text.find("\nBrisel.zgtype: 2045 \n"), text.npos) << "11 flags, the second one off";

  program_start();
  EXPECT_FALSE(setup_file_missing);
  EXPECT_EQ(quantization_settings.ibit, 24);
  EXPECT_EQ(design_state.ZTransformMethod, 2);
  EXPECT_EQ(plot_settings.nfpts, 777);
  EXPECT_EQ(workplace_names.user_name, "A. User: 5 %s");
  EXPECT_FALSE(z_plot_on[1]);
  program_exit(ExitMode::discard);
  EXPECT_EQ(Session::setup(), text);
  program_start();
  program_exit(ExitMode::defaults);
  EXPECT_TRUE(fs::is_empty(session.folder));
}

TEST(SetupFile, BadValuesAreStartValues) {
  Session session;
  const struct {
    const char *line;
    std::int32_t *place;
  } rows[] = {
      {"Brisel.ibit: 53 ", &quantization_settings.ibit},
      {"Brisel.ibit: 99999999999 ", &quantization_settings.ibit},
      {"Brisel.ibit: nonsense", &quantization_settings.ibit},
      {"Brisel.back_color: 9 ", &display_settings.back_color},
      {"Brisel.label_font: -1 ", &display_settings.label_font},
      {"Brisel.nfpts: 10002 ", &plot_settings.nfpts},
      {"Brisel.dnimp: 0 ", &plot_settings.dnimp},
      {"Brisel.ibit", &quantization_settings.ibit},
      {"brisel.ibit: 8 ", &quantization_settings.ibit},
  };
  for (const auto &row : rows) {
    set_start_values();
    const std::int32_t start = *row.place;
    read_setup(header + row.line + "\n");
    EXPECT_EQ(*row.place, start) << row.line;
  }
  set_start_values();
  read_setup("Brisel System Setup File V6.0\nBrisel.ibit: 8 \n");
  EXPECT_EQ(quantization_settings.ibit, 16) << "a foreign file";
  read_setup(header + "Brisel." + std::string(101, 'k') + ": 1 \nBrisel.ibit: 8");
  EXPECT_EQ(quantization_settings.ibit, 8) << "no final line feed";
  for (const auto &[line, name] : {std::pair{"Brisel.user_name: 3 abcdef", "abc"},
                                   {"Brisel.user_name: 900 ab", "ab"},
                                   {"Brisel.user_name: -3 ab", ""},
                                   {"Brisel.user_name: 2147483647 ab", "ab"}}) {
    set_start_values();
    read_setup(header + line);
    EXPECT_EQ(workplace_names.user_name, name) << line;
  }
  const SetupFiles files =
      read_setup(header + "Brisel.load_spc: 5 a.spc\nBrisel.load_inp: 0 b\nBrisel.load_inp: 5 c.inp\n");
  EXPECT_EQ(files.specifications, std::vector<std::string>{"a.spc"});
  EXPECT_EQ(files.systems, std::vector<std::string>{"c.inp"});
}

TEST(SetupFile, LineBreaksInsideTextsBeginNoLines) {
  Session session;
  set_start_values();
  workplace_names.user_name = "Eve\nBrisel.ibit: 8 ";
  workplace_names.co_name = std::string("A\0B", 3);
  spec_path[0] = "a.spc\nBrisel.ibit: 9 ";
  spec_path[1] = "100% %s.spc";
  const SetupFiles files = read_setup(format_setup("12:00:00", "today"));
  EXPECT_EQ(quantization_settings.ibit, 16);
  EXPECT_EQ(workplace_names.user_name, "Eve");
  EXPECT_EQ(workplace_names.co_name, "A");
  EXPECT_EQ(files.specifications, std::vector<std::string>{"100% %s.spc"});
  set_start_values();
}

TEST(Start, PassesOverWhatIsNoFileAndWhatIsNoSpecification) {
  Session session;
  ASSERT_EQ(::mkfifo("pipe.spc", 0600), 0);
  std::ofstream("bad.spc") << "FILTER SPECIFICATION FILE\nFILTER TYPE:LOW PASS 1H\n";
  std::ofstream("system.brisel") << header + "Brisel.load_spc: 8 pipe.spc\nBrisel.load_spc: 9 /dev/zero\n"
                                             "Brisel.load_spc: 7 bad.spc\nBrisel.load_spc: 6 no.spc\n"
                                             "Brisel.pp_comd: 10 touch evil\nBrisel.ibit: 12 \n";
  program_start();
  EXPECT_EQ(quantization_settings.ibit, 12);
  for (const std::string &path : spec_path) EXPECT_EQ(path, "");
  program_exit(ExitMode::discard);
  EXPECT_FALSE(fs::exists("evil"));
}

TEST(Start, SystemsAreLoadedOnceAndKeepTheirLines) {
  Session session;
  std::ofstream("a.inp") << "DIGITAL SYSTEM ANALYSIS - Z DOMAIN INPUT\nINPUT OPTION - NONSYMMETRIC FIR FILTER\n"
                            "SAMPLING FREQUENCY           8.00000e+03 HERTZ\nNUMBER OF TAPS     1 GAIN=  1.0\n"
                            "H(   0) =  5.0e-01\n";
  const std::string lines = "Brisel.load_inp: 5 a.inp\nBrisel.load_inp: 6 no.inp\n";
  std::ofstream("system.brisel") << header + lines + lines;
  for (int i = 0; i < 2; i++) {
    program_start();
    EXPECT_EQ(z_entries.fir[2].length, 1);
    EXPECT_EQ(z_path[9], "a.inp");
    program_exit(ExitMode::save);
    EXPECT_TRUE(Session::setup().ends_with(" \n" + lines) || Session::setup().ends_with("\n" + lines));
  }
}

TEST(Start, TwoSessionsInAFolderKeepEachOthersLines) {
  Session session;
  program_start();
  std::ofstream("SFIL.STA", std::ios::app) << "of the other session\n";
  trace("of this session\n");
  program_exit(ExitMode::discard);
  std::ifstream in("SFIL.STA");
  const std::string text(std::istreambuf_iterator<char>(in), {});
  EXPECT_NE(text.find("of the other session\n"), text.npos) << text;
  EXPECT_NE(text.find("of this session\n"), text.npos) << text;
}

TEST(Start, AFolderThatTakesNoFilesIsToldOnceAtTheStartAndOnceAtTheExit) {
  Session session;
  fs::current_path("/proc"); // read-only even for the administrator
  program_start();
  trace("to the null device\n");
  reopen_system_files();
  EXPECT_EQ(session.front.shown, (std::vector<std::string>{"The File SFIL.STA cannot be opened for write\n",
                                                           "The File SFIL.OUT cannot be opened for write\n"}));
  EXPECT_FALSE(program_exit(ExitMode::save));
  ASSERT_EQ(session.front.posted.size(), 1u);
  EXPECT_EQ(session.front.posted[0].number, Message::write_failed);
}

TEST(Exit, ReportsASetupFileThatCannotBeWritten) {
  Session session;
  fs::create_directory("system.brisel");
  program_start();
  EXPECT_FALSE(program_exit(ExitMode::save));
  ASSERT_EQ(session.front.posted.size(), 1u);
  EXPECT_EQ(session.front.posted[0].number, Message::write_failed);
}
