#include "engine/core/messages.h"
#include "tests/support/source_folder.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <unistd.h>

using namespace brisel;

static const std::string own_file = source_file("share/brisel.msg");

TEST(MessageFile, HasATextForEveryNumberOfTheProgram) {
  for (const Message number : all_messages) {
    const std::string text = get_message(static_cast<int>(number), own_file);
    EXPECT_EQ(text.find("is not available"), text.npos) << static_cast<int>(number);
    EXPECT_GE(std::count(text.begin(), text.end(), '\n'), 3) << "what, why, what to do: " << static_cast<int>(number);
    EXPECT_EQ(text.find(".MESSAGE"), text.npos) << "runs on into the next: " << static_cast<int>(number);
  }
}

TEST(MessageFile, NumbersAscend) {
  std::ifstream in(own_file);
  int last = -1;
  for (std::string line; std::getline(in, line);) {
    if (!line.starts_with(".MESSAGE")) continue;
    const int number = std::stoi(line.substr(8));
    EXPECT_GT(number, last);
    last = number;
  }
  EXPECT_GT(last, 0);
}

TEST(GetMessage, SaysWhatIsMissingAndEndsLongTexts) {
  const std::string path = std::filesystem::temp_directory_path() / ("brisel_messages_" + std::to_string(::getpid()));
  std::ofstream out(path);
  out << "a line before\n.MESSAGE 5 five\n%s%n\n.END_OF_MESSAGE\n.MESSAGE_TOO 7\nlong\n";
  for (int i = 0; i < 60; i++) out << "line\n";
  out << ".END_OF_MESSAGE\n.MESSAGE 6\nbehind a larger number\n.END_OF_MESSAGE\n.MESSAGE nonsense\n";
  out.close();
  struct Row {
    int number;
    const char *text;
  };
  for (const Row &row : {Row{5, "%s%n\n"}, Row{6, "Message 6\n is not available."},
                         Row{4, "Message 4\n is not available."}, Row{9, "Message 9\n is not available."}})
    EXPECT_EQ(get_message(row.number, path), row.text);
  const std::string text = get_message(7, path);
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), max_message_lines);
  std::filesystem::remove(path);
  EXPECT_EQ(get_message(5, path), "Message file " + path + " is missing");
}
