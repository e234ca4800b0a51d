#include "engine/files/text_file.h"

#include <clocale>
#include <cmath>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

using namespace brisel;
namespace fs = std::filesystem;

namespace {

struct Folder {
  fs::path path = fs::temp_directory_path() / ("brisel_text_" + std::to_string(::getpid()));
  Folder() { fs::create_directories(path); }
  ~Folder() { fs::remove_all(path); }
  std::string operator/(const char *name) const { return (path / name).string(); }
};

std::string content(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

} // namespace

TEST(Numbers, AreDecimalAndFiniteOrNothing) {
  struct Row {
    const char *text;
    std::optional<double> value;
  };
  const Row rows[] = {{"  12.5 HERTZ", 12.5},
                      {"+.5", 0.5},
                      {"-.5000E+00", -0.5},
                      {"0.100000E+04", 1000.0},
                      {"1e999", {}},
                      {"nan", {}},
                      {"-inf", {}},
                      {"infinity", {}},
                      {"0x1p3", {}},
                      {"", {}},
                      {"   ", {}},
                      {"HERTZ", {}},
                      {"+-1", {}},
                      {"1,5", 1.0},
                      {"--1", {}},
                      {"-0x3", {}}};
  for (const Row &row : rows) EXPECT_EQ(parse_number(row.text), row.value) << row.text;
  EXPECT_EQ(number_at("abc 7", 3), 7.0);
  EXPECT_EQ(number_at("abc", 3), std::nullopt) << "a short line never yields an old value";
  EXPECT_EQ(integer_at("  99999999999999999999", 0), std::nullopt);
}

TEST(Numbers, AreWrittenInTheCLocale) {
  if (!std::setlocale(LC_ALL, "de_DE.UTF-8")) std::setlocale(LC_ALL, "C.UTF-8");
  EXPECT_EQ(formatf("% 6.2f|", 1.5), "  1.50|");
  std::setlocale(LC_ALL, "C");
  EXPECT_EQ(formatf("%s", std::string(1000, 'x').c_str()).size(), 1000u);
  EXPECT_EQ(parse_number(shortest(M_PI)), M_PI);
}

TEST(LineReader, EndsAtALineThatDoesNotFitItsBuffer) {
  const Folder folder;
  std::ofstream(folder / "a") << "12345678\nno end";
  LineReader fits(10);
  ASSERT_TRUE(fits.open(folder / "a"));
  EXPECT_TRUE(fits.next());
  EXPECT_EQ(fits.line(), "12345678");
  EXPECT_TRUE(fits.next());
  EXPECT_EQ(fits.line(), "no end");
  EXPECT_FALSE(fits.next());
  EXPECT_EQ(fits.line_number(), 3);
  LineReader short_one(9);
  ASSERT_TRUE(short_one.open(folder / "a"));
  EXPECT_FALSE(short_one.next());
  EXPECT_TRUE(short_one.too_long());
  ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
  for (const std::string &no_file : {folder.path.string(), folder / "pipe", std::string("/dev/zero")}) {
    LineReader reader(99);
    EXPECT_FALSE(reader.open(no_file)) << no_file;
    EXPECT_EQ(read_file(no_file, 99), std::nullopt) << no_file;
  }
}

TEST(FileSet, LeavesEveryTargetAsItWasWhenOneFails) {
  const Folder folder;
  std::ofstream(folder / "old") << "old";
  std::string why;
  FileSet files;
  files.add(folder / "old", "new");
  files.add(folder / "no folder/b", "b");
  EXPECT_FALSE(files.commit(why));
  EXPECT_NE(why.find("no folder/b"), why.npos) << why;
  EXPECT_EQ(content(folder / "old"), "old");
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.path), {}), 1) << "no temporary file stays";
  EXPECT_FALSE(save_file("/dev/full", "x", why));
  EXPECT_TRUE(fs::exists("/dev/full"));
}

TEST(FileSet, FollowsLinksAndReplacesWholeFiles) {
  const Folder folder;
  fs::create_directory(folder.path / "deep");
  fs::create_symlink("deep/second", folder / "link");
  fs::create_symlink("../target", folder / "deep/second");
  std::string why;
  for (const char *text : {"a longer text for a file that is not there yet", "new"}) {
    ASSERT_TRUE(save_file(folder / "link", text, why)) << why;
    EXPECT_TRUE(fs::is_symlink(folder / "link"));
    EXPECT_EQ(content(folder / "target"), text);
  }
  fs::create_symlink("round", folder / "round");
  EXPECT_FALSE(save_file(folder / "round", "x", why));
  EXPECT_TRUE(fs::is_symlink(folder / "round"));
}

TEST(FileSet, WritesThroughWhatIsNoFile) {
  const Folder folder;
  ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
  const int reader = ::open((folder / "pipe").c_str(), O_RDONLY | O_NONBLOCK);
  std::string why;
  EXPECT_TRUE(save_file(folder / "pipe", "through", why)) << why;
  char read[20] = "";
  EXPECT_EQ(::read(reader, read, sizeof read), 7);
  EXPECT_STREQ(read, "through");
  EXPECT_TRUE(fs::is_fifo(folder / "pipe"));
  ::close(reader);
}

TEST(FileSet, WritesWhereverTheSystemItselfCan) {
  const Folder folder;
  std::string why;
  // The longest name there is leaves no room for six more characters.
  const std::string longest = folder / std::string(255, 'n').c_str();
  for (const char *text : {"first", "second"}) {
    ASSERT_TRUE(save_file(longest, text, why)) << why;
    EXPECT_EQ(content(longest), text);
  }
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.path), {}), 1);
  // The system's own links: to a pipe, and to a file that has no name any more.
  int ends[2] = {};
  ASSERT_EQ(::pipe(ends), 0);
  const int nameless = ::open((folder / "gone").c_str(), O_RDWR | O_CREAT, 0600);
  fs::remove(folder / "gone");
  for (const auto &[write_to, read_from] : {std::pair{ends[1], ends[0]}, {nameless, nameless}}) {
    ASSERT_TRUE(save_file(formatf("/proc/self/fd/%d", write_to), "through", why)) << why;
    char read[20] = "";
    EXPECT_EQ(::read(read_from, read, sizeof read), 7);
    EXPECT_STREQ(read, "through");
  }
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.path), {}), 1) << "no file of the link's words";
  for (const int descriptor : {ends[0], ends[1], nameless}) ::close(descriptor);
}

TEST(SaveNewFile, LeavesAnotherOnesFileAlone) {
  const Folder folder;
  std::ofstream(folder / "taken") << "mine";
  fs::create_symlink("nowhere", folder / "link");
  std::string why;
  for (const char *name : {"taken", "link"}) {
    EXPECT_FALSE(save_new_file(folder / name, "x", why)) << name;
    EXPECT_EQ(errno, EEXIST) << name;
  }
  EXPECT_EQ(content(folder / "taken"), "mine");
  ASSERT_TRUE(save_new_file(folder / "free", "x", why)) << why;
  EXPECT_EQ(content(folder / "free"), "x");
}
