#include "libkyr/text.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(CopyText, FillsTheFieldAndCutsAtWholeCharacters) {
  const struct {
    std::string text;
    const char* stored;
    bool whole;
  } table[] = {
      {"", "", true},
      {"1234567", "1234567", true},
      {"12345678", "1234567", false},
      {"12345\u00E9", "12345\u00E9", true},
      {"123456\u00E9", "123456", false},
      {"12345\u20AC", "12345", false},
      {"1234\U0001F30D", "1234", false},
      {"\U0001F30D\u20AC", "\U0001F30D\u20AC", true},
      {"\x80\x81\x82\x83\x84\x85\x86\x87", "\x80\x81\x82\x83\x84\x85\x86", false},  // no UTF-8: cut where it ends
  };
  for (const auto& row : table) {
    char field[9] = "########";
    EXPECT_EQ(copyText(field, 8, row.text), row.whole) << row.text;
    EXPECT_STREQ(field, row.stored);
    EXPECT_EQ(field[7], '\0');
    EXPECT_EQ(field[8], '\0');
  }
}

TEST(CopyText, ClearsTheRestAndKnowsSmallFields) {
  char field[6] = {'a', 'b', 'c', 'd', 'e', 'f'};
  EXPECT_TRUE(copyText(field, "x"));
  EXPECT_EQ(std::string(field, sizeof field), std::string("x\0\0\0\0\0", 6));
  char one[1] = {'a'};
  EXPECT_FALSE(copyText(one, "x"));
  EXPECT_EQ(one[0], '\0');
  EXPECT_FALSE(copyText(field, 0, "x"));
  EXPECT_EQ(field[0], 'x');
}

TEST(FieldText, EndsAtTheTerminatorOrTheField) {
  const char full[3] = {'a', 'b', 'c'};
  EXPECT_EQ(fieldText(full), "abc");
  EXPECT_EQ(fieldText("ab\0c"), "ab");
}

TEST(TrimText, TakesWhiteFromBothEnds) {
  EXPECT_EQ(trimText(" \t a b\r\n"), "a b");
  EXPECT_EQ(trimText(" \n"), "");
  EXPECT_EQ(trimText("ab"), "ab");
}

TEST(FormatText, HoldsAnyLength) {
  EXPECT_EQ(formatText("%d block%s", 2, "s"), "2 blocks");
  EXPECT_EQ(formatText("%s", ""), "");
  const std::string longText(100000, 'x');
  EXPECT_EQ(formatText("<%s>", longText.c_str()), "<" + longText + ">");
}

}  // namespace
