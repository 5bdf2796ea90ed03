// The order and the words of the file box's list, without a folder.
#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <string>
#include <vector>

#include "xvt/boxes/listing.h"

namespace {

using namespace xvt;

std::string namesOf(const Entries& entries) {
  std::string names;
  for (const DirectoryEntry& entry : entries) names += (names.empty() ? "" : " ") + entry.name;
  return names;
}

TEST(Listing, SortsAsPeopleCount) {
  std::setlocale(LC_CTYPE, "C.UTF-8");
  const Entries entries = {{"img10", false, false, 5, 30},
                           {"Zeta", true, false, 4096, 10},
                           {"IMG2", false, false, 70, 30},
                           {"img02b", false, false, 5, 20},
                           {"\xC3\x89t\xC3\xA9", false, false, 5, 20},
                           {"\xC3\xA9ta", false, false, 5, 20},
                           {"alpha", true, false, 9, 20},
                           {"img2", false, false, 6, 40}};
  const auto sorted = [&](ListOrder order) {
    Entries copy = entries;
    sortEntries(&copy, order);
    return namesOf(copy);
  };
  const std::string files = "IMG2 img2 img02b img10 \xC3\xA9ta \xC3\x89t\xC3\xA9";
  EXPECT_EQ(sorted({SortBy::name, false}), "alpha Zeta " + files);
  EXPECT_EQ(sorted({SortBy::name, true}), "Zeta alpha \xC3\x89t\xC3\xA9 \xC3\xA9ta img10 img02b img2 IMG2");
  EXPECT_EQ(sorted({SortBy::size, false}), "alpha Zeta IMG2 img2 img02b img10 \xC3\xA9ta \xC3\x89t\xC3\xA9");
  EXPECT_EQ(sorted({SortBy::size, true}), "alpha Zeta img02b img10 \xC3\xA9ta \xC3\x89t\xC3\xA9 img2 IMG2");
  EXPECT_EQ(sorted({SortBy::date, false}), "alpha Zeta img2 IMG2 img10 img02b \xC3\xA9ta \xC3\x89t\xC3\xA9");

  ListOrder order;
  order.press(SortBy::date);
  EXPECT_EQ(order.headOf(SortBy::date), "Date \xE2\x96\xBC");
  order.press(SortBy::date);
  EXPECT_EQ(order.headOf(SortBy::date), "Date \xE2\x96\xB2");
  EXPECT_EQ(order.headOf(SortBy::name), "Name");
  order.press(SortBy::name);
  EXPECT_EQ(order.headOf(SortBy::name), "Name \xE2\x96\xB2");
}

TEST(Listing, ShowsEverySizeDateAndName) {
  const std::vector<std::pair<long long, std::string>> sizes = {{0, "0 B"},
                                                                {999, "999 B"},
                                                                {1000, "1.0 kB"},
                                                                {99949, "99.9 kB"},
                                                                {99950, "100 kB"},
                                                                {999'499, "999 kB"},
                                                                {999'500, "1.0 MB"},
                                                                {1'234'567'890'123, "1.2 TB"},
                                                                {9'223'372'036'854'775'807, "9.2 EB"}};
  for (const auto& [bytes, text] : sizes) EXPECT_EQ(shownSize(bytes), text);
  setenv("TZ", "UTC", 1);
  EXPECT_EQ(rowOf({"a\tb\n\xFF", false, false, 1200, 1'795'348'740}, true),
            "a\xEF\xBF\xBD"
            "b\xEF\xBF\xBD\xEF\xBF\xBD\t1.2 kB\t2026-11-22 11:59");
  EXPECT_EQ(rowOf({"lost", false, true, 7, 0}, true), "lost\tleads nowhere\t");
  EXPECT_EQ(rowOf({"sub", true, false, 4096, 0}, false), "sub/\t");
}

TEST(Listing, CompletesAsFarAsThereIsOneWay) {
  const Entries entries = {{"line-1", false}, {"line-12", false},   {"Line-x", false},
                           {".lint", false},  {"\xC3\xA9t", false}, {"\xC3\xA8t", false}};
  const auto completed = [&](const std::string& begin) {
    const Completion found = completionOf(entries, begin);
    return std::to_string(found.count) + found.text;
  };
  EXPECT_EQ(completed("l"), "2line-1");
  EXPECT_EQ(completed("LI"), "3LI");
  EXPECT_EQ(completed("line-X"), "1Line-x");
  EXPECT_EQ(completed(".l"), "1.lint");
  EXPECT_EQ(completed("\xC3\xA9"), "1\xC3\xA9t");
  EXPECT_EQ(completed("zz"), "0zz");
  EXPECT_EQ(completionOf({{"\xC3\xA9", false}, {"\xC3\xA8", false}}, "").text, "") << "no half of a character";
}

TEST(Listing, TakesPathsAsTheyArePasted) {
  for (const auto& [pasted, path] :
       std::vector<std::pair<std::string, std::string>>{{"  /data/x.tpf \r\n", "/data/x.tpf"},
                                                        {"'/data/my x.tpf'", "/data/my x.tpf"},
                                                        {"file:/data/my%20x%41.tpf", "/data/my xA.tpf"},
                                                        {"file://localhost/data/x", "/data/x"},
                                                        {"file://elsewhere/data/x", "file://elsewhere/data/x"},
                                                        {"file:///data/x%4", "file:///data/x%4"},
                                                        {"file://host", "file://host"},
                                                        {"file:///a%00b", "file:///a%00b"},
                                                        {" \n", ""},
                                                        {"100%25", "100%25"}})
    EXPECT_EQ(pathFrom(pasted), path);
}

}  // namespace
