// Scripts made into statements.
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/test_files.h"
#include "xvt/script/script_parse.h"

using xvt::script::ParseError;
using xvt::script::Source;
using xvt::script::Statement;
using xvt::script::Verb;

namespace {

std::string wordsOf(const std::string& line) {
  std::string reason;
  const auto words = xvt::script::splitWords(line, {{"given", "1"}, {"QTEST", "a b"}, {"next-tape", "0"}}, &reason);
  if (!words) return "wrong: " + reason;
  std::string all;
  for (const auto& word : *words) all += (word.quoted ? "<\"" : "<") + word.text + ">";
  return all;
}

std::optional<std::vector<Statement>> parse(const std::string& text, ParseError* error,
                                            const xvt::script::Values& values = {}) {
  Source source;
  const auto file = std::make_shared<const std::string>("test.qs");
  std::istringstream lines(text);
  std::string line;
  while (std::getline(lines, line)) source.lines.push_back({file, static_cast<int>(source.lines.size()) + 1, line});
  return xvt::script::parse(source, values, error);
}

TEST(ScriptWords, FollowQuotesEscapesAndVariables) {
  setenv("QTEST", "not this", 1);
  setenv("QTEST_ENVIRONMENT", "yes", 1);
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
      {"$QTEST_ENVIRONMENT ${next-tape}-$given-1", "<yes><0-1-1>"},
      {"100$ $/x", "<100$><$/x>"},
      {"line\r", "<line>"},
      {R"(print "open)", "wrong: a quote is not closed"},
      {R"(print x\)", "wrong: nothing follows the last \\"},
      {"$QTEST_UNSET", "wrong: the variable QTEST_UNSET is not set"},
      {"${QTEST", "wrong: ${QTEST is not closed"},
      {"${}", "wrong: ${} has no name"},
  };
  for (const auto& [line, words] : cases) EXPECT_EQ(wordsOf(line), words) << line;
}

TEST(ScriptParse, KnowsVerbsOfOneAndTwoWords) {
  ParseError error;
  const auto statements = parse(
      "# copy\n\npress copy.start\nwait no-window progress 2.5\nselect copy.list \"3\" add\nexpect file x size 12",
      &error);
  ASSERT_TRUE(statements) << error.reason;
  ASSERT_EQ(statements->size(), 4U);
  const Statement& wait = (*statements)[1];
  EXPECT_EQ(std::tuple(wait.line, wait.verb, wait.text(0), wait.number(1)),
            std::tuple(4, Verb::waitNoWindow, "progress", 2.5));
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
      {"end", "end: there is no block here"},
      {"when drive=1|NUMBER", "when: its \"end\" is missing"},
      {"when drive", "when: NAME=VALUE is missing"},
      {"when way=1", "when: there is no variable \"way\""},
      {"each drive 1,2", "each: there is a variable drive already"},
      {"answer box else \"x\"", "answer: its \"end\" is missing"},
  };
  for (const auto& [line, reason] : cases) {
    ParseError error;
    EXPECT_FALSE(parse("print ok\n" + line + "\nprint ok", &error, {{"drive", "1"}})) << line;
    EXPECT_EQ(error.reason, reason);
    EXPECT_EQ(error.line, 2);
  }
}

/// The statements that remain, as their first arguments.
std::string remains(const std::string& text, const xvt::script::Values& values) {
  ParseError error;
  const auto statements = parse(text, &error, values);
  if (!statements) return error.reason;
  std::string all;
  for (const Statement& each : *statements) {
    all += each.text(0) + " ";
    for (const Statement& inner : each.body) all += "(" + inner.text(0) + ") ";
  }
  return all;
}

TEST(ScriptParse, SettlesWhatHangsOnVariables) {
  const std::string choice =
      "when mode=ask\n  print asked\nelse\n  when mode=DRIVES\n    each drive ${mode}\n      answer box\n"
      "        select a.b ${drive}\n        when drive=next\n          print n\n        end\n      end\n    end\n  "
      "end\n"
      "  print ${mode}\nend\nprint done else \"no\"";
  EXPECT_EQ(remains(choice, {{"mode", "ask"}}), "asked done ");
  EXPECT_EQ(remains(choice, {{"mode", "1,next,*a*"}}), "box (a.b) box (a.b) (n) box (a.b) 1,next,*a* done ");
  EXPECT_EQ(remains(choice, {{"mode", "stop"}}), "stop done ");
}

TEST(ScriptHeads, DeclareTheVariablesOfARun) {
  const TestFolder folder;
  const std::string path = folder.path("job.qs");
  writeFile("part.qs", "#: takes way no|yes no whether\nprint part\n");
  const auto judge = [&](const std::string& text, const std::vector<std::pair<std::string, std::string>>& given) {
    writeFile(path, text);
    ParseError error;
    std::string reason;
    const auto source = xvt::script::readSource(path, {}, &error);
    if (!source)
      return std::filesystem::path(error.file).filename().string() + ":" + std::to_string(error.line) + ": " +
             error.reason;
    const auto values = xvt::script::takeValues(*source, given, &reason);
    if (!values) return reason;
    for (const auto& [key, value] : *values) reason += std::string(key).append("=").append(value).append(" ");
    return reason + std::to_string(source->lines.size());
  };
  const std::string head =
      "#: title x\n#: needs in DRIVE|none what to read\n#: takes n \"1 b|DECIMAL\" \"1 b\" count\n";
  const std::string both = head + "include part.qs\ninclude part.qs\n";
  EXPECT_EQ(judge(both, {{"in", "*x*"}}), "in=*x* n=1 b way=no 2");
  EXPECT_EQ(judge(both, {{"in", "none"}, {"n", "2.5"}, {"way", "yes"}}), "in=none n=2.5 way=yes 2");
  EXPECT_EQ(judge(head, {}), "in=DRIVE|none is missing: what to read");
  EXPECT_EQ(judge(head, {{"im", "1"}}), "there is no variable \"im\"; there are in, n");
  EXPECT_EQ(judge(head, {{"in", "1"}, {"n", "2.x"}}), "n=2.x: it must be 1 b or a number");
  EXPECT_EQ(judge("print x\n", {{"any", "1"}}), "any=1 1") << "a script without a head takes any";
  for (const auto& [text, reason] : std::vector<std::pair<std::string, std::string>>{
           {"#: titel x", "\"titel\" is not \"title\", \"needs\" or \"takes\""},
           {"#: title", "one title, with a text, stands in the script itself"},
           {"#: needs 1n NUMBER x", "\"1n\" is no name of a variable"},
           {"#: needs m NUMBERS x", "m: \"NUMBERS\" are no values"},
           {"#: needs m NUMBER", "m: its meaning is missing"},
           {"#: takes m NUMBER x y", "m: its default \"x\" is not a whole number"},
           {"#: needs in DRIVE x", "in is declared twice"}})
    EXPECT_EQ(judge(head + text, {}), "job.qs:4: the head: " + reason);
  EXPECT_EQ(judge("include none.qs", {}), "job.qs:1: include: there is no file \"none.qs\"");
  EXPECT_EQ(judge("include job.qs", {}), "job.qs:1: include: the files include each other too deeply");
}

}  // namespace
