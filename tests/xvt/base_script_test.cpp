// Scripts made into statements.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "xvt/script/script_parse.h"

using xvt::script::ParseError;
using xvt::script::Statement;
using xvt::script::Verb;

namespace {

std::string wordsOf(const std::string& line) {
  std::string reason;
  const auto words = xvt::script::splitWords(line, &reason);
  if (!words) return "wrong: " + reason;
  std::string all;
  for (const auto& word : *words) all += (word.quoted ? "<\"" : "<") + word.text + ">";
  return all;
}

TEST(ScriptWords, FollowQuotesEscapesAndVariables) {
  setenv("QTEST", "a b", 1);
  unsetenv("QTEST_UNSET");
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"", ""},
      {"  # only a comment", ""},
      {"press a.b\t# why", "<press><a.b>"},
      {"a#b", "<a#b>"},
      {R"(type x.y "two words")", R"(<type><x.y><"two words>)"},
      {R"("" x)", R"(<"><x>)"},
      {R"(in"si"de)", R"(<"inside>)"},
      {R"("a \"q\" \\ \$ \n|")", "<\"a \"q\" \\ $ \n|>"},
      {R"(a\ b \#c)", "<a b><#c>"},
      {"$QTEST/x ${QTEST}y", "<a b/x><a by>"},
      {R"("$QTEST")", R"(<"a b>)"},
      {"100$ $/x", "<100$><$/x>"},
      {"line\r", "<line>"},
      {R"(print "open)", "wrong: a quote is not closed"},
      {R"(print x\)", "wrong: nothing follows the last \\"},
      {"$QTEST_UNSET", "wrong: the environment variable QTEST_UNSET is not set"},
      {"${QTEST", "wrong: ${QTEST is not closed"},
      {"${}", "wrong: ${} has no name"},
  };
  for (const auto& [line, words] : cases) EXPECT_EQ(wordsOf(line), words) << line;
}

TEST(ScriptParse, KnowsVerbsOfOneAndTwoWords) {
  ParseError error;
  const auto statements = xvt::script::parse(
      "# copy\n\npress copy.start\nwait no-window progress 2.5\nselect copy.list \"3\" add\nexpect file x size 12",
      &error);
  ASSERT_TRUE(statements) << error.reason;
  ASSERT_EQ(statements->size(), 4U);
  const Statement& wait = (*statements)[1];
  EXPECT_EQ(wait.line, 4);
  EXPECT_EQ(wait.verb, Verb::waitNoWindow);
  EXPECT_EQ(wait.text(0), "progress");
  EXPECT_EQ(wait.number(1), 2.5);
  EXPECT_TRUE((*statements)[2].arguments[1].quoted) << "a quoted number is a row's text";
  EXPECT_EQ((*statements)[3].number(2), 12);
}

TEST(ScriptParse, SaysWhatIsWrongAndWhere) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"jump x", "there is no verb \"jump\""},
      {"wait", "there is no verb \"wait\""},
      {"wait for x 3", "there is no verb \"wait for\""},
      {"press", "press: WINDOW.CONTROL is missing"},
      {"press start", "press: \"start\" is not WINDOW.CONTROL"},
      {"press .x", "press: \".x\" is not WINDOW.CONTROL"},
      {"press a.b c", "press: \"c\" is too much"},
      {"select a.b row", "select: \"row\" is not a row number or a row's text in quotes"},
      {"select a.b 1 also", "select: \"also\" is not \"add\""},
      {"wait window x soon", "wait window: \"soon\" is not a number of seconds"},
      {"wait window x 1.", "wait window: \"1.\" is not a number of seconds"},
      {"sleep -1", "sleep: \"-1\" is not a number of seconds"},
      {"expect file x big", "expect file: \"big\" is not \"exists\", \"absent\" or \"size\""},
      {"expect file x size", "expect file: the size is missing"},
      {"expect file x exists 3", "expect file: \"3\" is too much"},
      {"print \"x", "a quote is not closed"},
  };
  for (const auto& [line, reason] : cases) {
    ParseError error;
    EXPECT_FALSE(xvt::script::parse("print ok\n" + line + "\nprint ok", &error)) << line;
    EXPECT_EQ(error.reason, reason);
    EXPECT_EQ(error.line, 2);
  }
}

}  // namespace
