// What of the toolkit layer needs no display: string lists, directories, texts.
#include <gtest/gtest.h>

#include <cstdarg>
#include <string>
#include <vector>

#include "tests/support/test_files.h"
#include "xvt/base/fsys.h"
#include "xvt/base/text.h"
#include "xvt/base/utf8.h"
#include "xvt/xvt.h"

namespace fs = std::filesystem;

namespace {

#define FFFD "\xEF\xBF\xBD"

TEST(Utf8, KeepsWhatIsValidAndReplacesEachOffendingByte) {
  struct Case {
    std::string in, out;
  };
  const std::vector<Case> cases = {
      {"plain", "plain"},
      {"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"},
      {"a\xFF"
       "b",
       "a" FFFD "b"},
      {"\x80\xBF", FFFD FFFD},                    // continuations of nothing
      {"\xC3", FFFD},                             // cut short at the end
      {"\xE2\x82", FFFD FFFD},                    // cut short at the end, both bytes
      {"\xE2\x82x", FFFD FFFD "x"},               // cut short by another character
      {"\xC0\xAF", FFFD FFFD},                    // overlong "/"
      {"\xE0\x9F\xBF", FFFD FFFD FFFD},           // overlong
      {"\xED\xA0\x80", FFFD FFFD FFFD},           // a surrogate
      {"\xED\x9F\xBF", "\xED\x9F\xBF"},           // the last before them
      {"\xF4\x8F\xBF\xBF", "\xF4\x8F\xBF\xBF"},   // U+10FFFF
      {"\xF4\x90\x80\x80", FFFD FFFD FFFD FFFD},  // beyond
      {"\xF0\x8F\xBF\xBF", FFFD FFFD FFFD FFFD},  // overlong
      {"\xF5\x80\x80\x80", FFFD FFFD FFFD FFFD},
  };
  for (const Case& each : cases) EXPECT_EQ(xvt::validUtf8(each.in), each.out);

  std::string text;
  for (std::size_t characters = 0; characters < 40; text += characters++ % 3 == 0 ? "\xF0\x9F\x98\x80" : "a")
    EXPECT_EQ(xvt::utf8Characters(text), characters);
}

std::string format(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  std::string text = xvt::formatted(format, arguments);
  va_end(arguments);
  return text;
}

TEST(Text, WrapsAtBlanksKeepsNewlinesAndBreaksLongWords) {
  using Lines = std::vector<std::string>;
  EXPECT_EQ(xvt::wrapped("", 10), (Lines{""}));
  EXPECT_EQ(xvt::wrapped("exactly 10", 10), (Lines{"exactly 10"}));
  EXPECT_EQ(xvt::wrapped("exactly 10 and more", 10), (Lines{"exactly 10", "and more"}));
  EXPECT_EQ(xvt::wrapped("one\n\ntwo three", 6), (Lines{"one", "", "two", "three"}));
  EXPECT_EQ(xvt::wrapped("abcdefghijkl m", 5), (Lines{"abcde", "fghij", "kl m"}));
  EXPECT_EQ(xvt::wrapped("\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9", 3), (Lines{"\xC3\xA9\xC3\xA9\xC3\xA9", "\xC3\xA9"}));
  const std::string longText(100000, 'x');
  EXPECT_EQ(format("%s%d", longText.c_str(), 7), longText + "7");
}

TEST(StringList, KeepsOrderTextsAndDataThroughInsertions) {
  SLIST list = xvt_slist_create();
  EXPECT_EQ(xvt_slist_get_first(list), nullptr);
  char text[] = "copied";
  ASSERT_TRUE(xvt_slist_add(list, nullptr, text, 2));
  text[0] = '?';
  ASSERT_TRUE(xvt_slist_add(list, nullptr, "last", 3));
  ASSERT_TRUE(xvt_slist_add(list, xvt_slist_get_first(list), "first", 1));
  std::string all;
  for (SLIST_ELT e = xvt_slist_get_first(list); e != nullptr; e = xvt_slist_get_next(list, e))
    all += xvt_slist_get_text(list, e) + std::to_string(xvt_slist_get_data(list, e)) + " ";
  EXPECT_EQ(all, "first1 copied2 last3 ");
  EXPECT_EQ(xvt_slist_count(list), 3);
  xvt_slist_destroy(list);
}

TEST(StringList, AnswersMistakesHarmlessly) {
  SLIST dead = xvt_slist_create();
  xvt_slist_destroy(dead);
  testing::internal::CaptureStderr();
  EXPECT_FALSE(xvt_slist_add(dead, nullptr, "x", 0));
  EXPECT_EQ(xvt_slist_count(dead), 0);
  xvt_slist_destroy(dead);
  SLIST one = xvt_slist_create();
  SLIST other = xvt_slist_create();
  xvt_slist_add(one, nullptr, "x", 7);
  EXPECT_STREQ(xvt_slist_get_text(other, xvt_slist_get_first(one)), "");
  EXPECT_FALSE(xvt_slist_add(other, xvt_slist_get_first(one), "y", 0));
  EXPECT_FALSE(xvt_slist_add(one, nullptr, nullptr, 0));
  EXPECT_EQ(xvt_slist_get_next(one, nullptr), nullptr);
  const std::string said = testing::internal::GetCapturedStderr();
  EXPECT_NE(said.find("xvt: xvt_slist_add: the list is dead\n"), std::string::npos);
  EXPECT_NE(said.find("xvt: xvt_slist_add: no text\n"), std::string::npos);
  xvt_slist_destroy(one);
  xvt_slist_destroy(other);
}

/// A directory of its own for each test, which the test stands in.
class Directories : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(xvt_fsys_save_dir()); }
  void TearDown() override { EXPECT_TRUE(xvt_fsys_restore_dir()); }
  static void touch(const std::string& name, std::size_t size = 0) { writeFile(name, std::string(size, 'x')); }
  static std::vector<std::string> list(const char* pattern, bool directories) {
    SLIST names = xvt_fsys_list_files(pattern, directories);
    std::vector<std::string> all;
    for (SLIST_ELT e = xvt_slist_get_first(names); e != nullptr; e = xvt_slist_get_next(names, e))
      all.emplace_back(xvt_slist_get_text(names, e));
    xvt_slist_destroy(names);
    return all;
  }
  static std::string here() {
    DIRECTORY directory{};
    EXPECT_TRUE(xvt_fsys_get_dir(&directory));
    return directory.path;
  }
  TestFolder folder_;
  const fs::path root_ = fs::canonical(".");
};

TEST_F(Directories, ListsFilesByPatternInByteOrder) {
  for (const char* name : {"b.sgy", "B.sgy", "a.sgy", ".hidden.sgy", "a.tpf", "\xFFodd.sgy", "no"}) touch(name);
  fs::create_directories("sub.sgy");
  fs::create_directories("Other");
  fs::create_directories(".git");
  fs::create_symlink("sub.sgy", "link");
  fs::create_symlink("a.tpf", "link.tpf");
  using Names = std::vector<std::string>;
  EXPECT_EQ(list("*.sgy", false), (Names{"B.sgy", "a.sgy", "b.sgy", "\xFFodd.sgy"}));
  EXPECT_EQ(list("[ab].*", false), (Names{"a.sgy", "a.tpf", "b.sgy"}));
  EXPECT_EQ(list("*.tpf", false), (Names{"a.tpf", "link.tpf"}));
  EXPECT_EQ(list("*", true), (Names{"..", "Other", "link", "sub.sgy"}));
  EXPECT_EQ(list("*", false).size(), 7U);
}

TEST_F(Directories, GoesAndComesBackInAStack) {
  fs::create_directories("one/two");
  DIRECTORY there{};
  ASSERT_TRUE(xvt_fsys_convert_str_to_dir("one/../one/two", &there));
  EXPECT_EQ(std::string(there.path), (root_ / "one/two").string());
  ASSERT_TRUE(xvt_fsys_save_dir());
  ASSERT_TRUE(xvt_fsys_set_dir(&there));
  ASSERT_TRUE(xvt_fsys_save_dir());
  ASSERT_TRUE(xvt_fsys_set_dir_startup());
  DIRECTORY startup{};
  ASSERT_TRUE(xvt_fsys_get_dir_startup(&startup));
  EXPECT_EQ(here(), startup.path);
  fs::rename(root_ / "one", root_ / "renamed");
  EXPECT_TRUE(xvt_fsys_restore_dir());
  EXPECT_EQ(here(), (root_ / "renamed/two").string()) << "the way back holds when the directory was renamed";
  EXPECT_TRUE(xvt_fsys_restore_dir());
  EXPECT_EQ(here(), root_.string());
}

TEST_F(Directories, RefusesWhatIsNoDirectory) {
  touch("file");
  DIRECTORY directory{"/kept"};
  EXPECT_FALSE(xvt_fsys_convert_str_to_dir("file", &directory));
  EXPECT_FALSE(xvt_fsys_convert_str_to_dir("nothing", &directory));
  EXPECT_FALSE(xvt_fsys_convert_str_to_dir("", &directory));
  EXPECT_STREQ(directory.path, "/kept");
  DIRECTORY endless;
  std::fill(std::begin(endless.path), std::end(endless.path), 'x');
  EXPECT_FALSE(xvt_fsys_set_dir(&endless)) << "a path without an end is not read past its field";
  EXPECT_EQ(here(), root_.string());
}

TEST_F(Directories, MeasuresFilesBeyondFourGigabytes) {
  touch("small", 5);
  touch("sparse");
  fs::resize_file("sparse", 5'000'000'000);
  EXPECT_EQ(xvt_fsys_get_file_size("small"), 5);
  EXPECT_EQ(xvt_fsys_get_file_size((root_ / "sparse").c_str()), 5'000'000'000);
  EXPECT_EQ(xvt_fsys_get_file_size("nothing"), -1);
  EXPECT_EQ(xvt_fsys_get_file_size("."), -1);
}

TEST_F(Directories, JoinsPaths) {
  setenv("HOME", "/home/someone", 1);
  EXPECT_EQ(xvt::joinPath("/data", "a.sgy"), "/data/a.sgy");
  EXPECT_EQ(xvt::joinPath("/", "a.sgy"), "/a.sgy");
  EXPECT_EQ(xvt::joinPath("/data", "/other/a.sgy"), "/other/a.sgy");
  EXPECT_EQ(xvt::joinPath("/data", "~/a.sgy"), "/home/someone/a.sgy");
  EXPECT_EQ(xvt::joinPath("/data", "~a.sgy"), "/data/~a.sgy");
}

}  // namespace
