// Selection of traces: lists and polygons as users type them, the test of a trace, the heap's order.

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "quarlo/segycopy/segycopy_sort.h"
#include "tests/segycopy/segy_fixture.h"

namespace {

using Points = std::vector<std::pair<double, double>>;

class SegySelectTest : public SegyTest {
 protected:
  /// Points of a list file; fails the test when it is refused.
  Points pointsOf(const std::string& text, bool useSecondary = false) {
    limitByList(text, useSecondary);
    forgetConsole();
    EXPECT_EQ(initPointsList(), 1) << text;
    Points points;
    for (int i = 0; i < ControlPoints; ++i) {
      const RangeItem& item = PointsList[static_cast<std::size_t>(i)];
      points.emplace_back(item.primary, item.secondary);
    }
    endRangeLimit();
    return points;
  }
  /// The last line said when a list is refused.
  std::string refusalOf(const std::string& text, bool useSecondary = false) {
    limitByList(text, useSecondary);
    forgetConsole();
    EXPECT_EQ(initPointsList(), 0) << text;
    endRangeLimit();
    return lastLine();
  }
  std::string polygonRefusal(const std::string& text) {
    limitByPolygonFile(text);
    forgetConsole();
    EXPECT_EQ(initPolygon(), 0) << text;
    endRangeLimit();
    return lastLine();
  }
  std::string lastLine() {
    const auto lines = consoleWithoutDates();
    return lines.empty() ? "" : lines.back();
  }
  bool keeps(std::int32_t primary, std::int32_t secondary) {
    return traceInRange(segyTrace({1, 1, primary, secondary}, 1).data()) != 0;
  }
  std::string listFile() { return folder.path("list.txt"); }
};

TEST_F(SegySelectTest, PointListsAreReadHoweverTheyWereTyped) {
  EXPECT_EQ(pointsOf("H inline\n7\n3\n5\n"), (Points{{3, 0}, {5, 0}, {7, 0}}));
  EXPECT_EQ(pointsOf("7\r\n\r\n \t3 \r\n\n+5.5"), (Points{{3, 0}, {5.5, 0}, {7, 0}}));
  EXPECT_EQ(pointsOf("2 9\n2\t1\n1 4 remark\n3\n", true), (Points{{1, 4}, {2, 1}, {2, 9}, {3, 0}}));
  EXPECT_EQ(pointsOf("2 9\n1 4\n"), (Points{{1, 0}, {2, 0}}));
  EXPECT_EQ(pointsOf("8" + std::string(300, ' ') + "\n9 " + std::string(200, 'x') + "\n"), (Points{{8, 0}, {9, 0}}));
  EXPECT_EQ(pointsOf(""), Points{});
  EXPECT_EQ(pointsOf("H only\n\n"), Points{});
  EXPECT_EQ(consoleWithoutDates(), (std::vector<std::string>{" ", "Initializing inclusion list...", " "}));
}

TEST_F(SegySelectTest, RangeListsStandForEveryPointOfTheirGrid) {
  EXPECT_EQ(pointsOf("5 - 7 1 - 2\n", true), (Points{{5, 1}, {5, 2}, {6, 1}, {6, 2}, {7, 1}, {7, 2}}));
  EXPECT_EQ(pointsOf("4\n1 - 2\n", false), (Points{{1, 0}, {2, 0}, {4, 0}}));
  EXPECT_EQ(pointsOf("1 - 2 8\n3 6 - 7\n4 5\n", true), (Points{{1, 8}, {2, 8}, {3, 6}, {3, 7}, {4, 5}}));
  // High to low keeps the first value; a negative number makes every line a range line.
  EXPECT_EQ(pointsOf("20 - 10\n"), (Points{{20, 0}}));
  EXPECT_EQ(pointsOf("-3\n-5 - -4\n"), (Points{{-5, 0}, {-4, 0}, {-3, 0}}));
  // Nothing behind the "-" is 0.0.
  EXPECT_EQ(pointsOf("-2 -\n"), (Points{{-2, 0}, {-1, 0}, {0, 0}}));
  // As many points as the steps make, not as the difference has whole numbers.
  EXPECT_EQ(pointsOf("0.3 - 2.3\n").size(), 3U);
  EXPECT_EQ(pointsOf("1\n\n\r\n2 - 3"), (Points{{1, 0}, {2, 0}, {3, 0}}));
  // A blank line goes to the console for each line of the list, behind the three at the start.
  EXPECT_EQ(consoleWithoutDates().size(), 3U + 2U);
}

TEST_F(SegySelectTest, AHeaderIsAnEntryOfARangeListAndTheLogSaysSo) {
  EXPECT_EQ(pointsOf("H LINE 7-A\n5\n6\n"), (Points{{0, 0}, {5, 0}}));
  expectSaid(
      "  ** The list file holds a \"-\" and is read in range form: its header lines (1) are taken as entries and its "
      "last entries (1) are not read.");
}

TEST_F(SegySelectTest, WhatIsNoListIsRefusedWithItsLine) {
  EXPECT_EQ(refusalOf("1\n\ntwo\n"), "  *** Line 3 of " + listFile() + " holds no number: two");
  EXPECT_EQ(refusalOf("1\n3,4\n"), "  *** Line 2 of " + listFile() + " holds no number: 3,4");
  for (const auto& [word, range] : std::vector<std::pair<std::string, std::string>>{{"5-7", "5 - 7"},
                                                                                    {"-5-7", "-5 - 7"},
                                                                                    {"5--7", "5 - -7"},
                                                                                    {"1e-1-7", "1e-1 - 7"},
                                                                                    {"3 8.5-9", "8.5 - 9"},
                                                                                    {"10- 20", "10 - 20"},
                                                                                    {"3 5- -4 1", "5 - -4"}}) {
    EXPECT_EQ(
        refusalOf("H 1-2\n" + word + "\n"),
        "  *** Line 2 of " + listFile() + " holds a range without blanks, which is written " + range + ": " + word);
  }
  EXPECT_EQ(pointsOf("1e-1\n-5\n7 well 3-A\n"), (Points{{-5, 0}, {0.1, 0}, {7, 0}}));
  EXPECT_EQ(refusalOf("nan\n"), "  *** Line 1 of " + listFile() + " holds no number: nan");
  EXPECT_EQ(refusalOf("4 x\n", true), "  *** Line 1 of " + listFile() + " holds no number: 4 x");
  const std::string tooMany = " stands for more points than can be held: ";
  EXPECT_EQ(refusalOf("1 - 2\n0 - 1e15\n"), "  *** Line 2 of " + listFile() + tooMany + "0 - 1e15");
  EXPECT_EQ(refusalOf("1 - 1e9 1 - 1e9\n", true), "  *** Line 1 of " + listFile() + tooMany + "1 - 1e9 1 - 1e9");
  // Steps of one are lost in numbers of this size.
  EXPECT_EQ(refusalOf("9007199254740992 - 9007199254740996\n"),
            "  *** Line 1 of " + listFile() + tooMany + "9007199254740992 - 9007199254740996");
  copyText(SgyParams.listParams.file, "none.txt");
  EXPECT_EQ(initPointsList(), 0);
  EXPECT_EQ(lastLine(), "  *** Error opening list file: " + folder.path("none.txt"));
  copyText(SgyParams.listParams.file, "drives");
  EXPECT_EQ(initPointsList(), 0);
  EXPECT_EQ(lastLine(), "  *** Error reading list file: " + folder.path("drives"));
}

TEST_F(SegySelectTest, GetRangeReadsOneLineAfterAnother) {
  writeFile(folder.path("ranges"), "1 - 3 7\n\nH x\n5 2 - 4");
  SgyParams.listParams.useSec = true;
  const FileHandle file = openFile(folder.path("ranges").c_str(), "r");
  double values[4];
  const auto next = [&] { return getRange(file.get(), &values[0], &values[1], &values[2], &values[3]); };
  ASSERT_EQ(next(), 1);
  EXPECT_EQ(std::vector<double>(values, values + 4), (std::vector<double>{1, 3, 7, 7}));
  ASSERT_EQ(next(), 1);
  EXPECT_EQ(std::vector<double>(values, values + 4), (std::vector<double>{0, 0, 0, 0}));
  ASSERT_EQ(next(), 1);
  EXPECT_EQ(std::vector<double>(values, values + 4), (std::vector<double>{5, 5, 2, 4}));
  EXPECT_EQ(next(), 0);
}

TEST_F(SegySelectTest, PolygonFilesAreHeldAgainstTheirAnnouncement) {
  limitByPolygonFile("4 corners\r\n0 0\r\n\r\n10\t0\n10 10\n0 10");
  ASSERT_EQ(initPolygon(), 1);
  EXPECT_EQ(SgyParams.polyParams.numPoints, 4);
  ASSERT_EQ(RangePolygon.size(), 5U);
  EXPECT_EQ(RangePolygon[4].x, RangePolygon[0].x);
  EXPECT_EQ((std::vector<double>{MinX, MaxX, MinY, MaxY}), (std::vector<double>{0, 10, 0, 10}));
  endRangeLimit();

  const std::string path = folder.path("poly.txt");
  EXPECT_EQ(polygonRefusal("3\n0 0\n1 1\n"), "  *** Error reading polygon file: " + path);
  EXPECT_EQ(polygonRefusal(""), "  *** Error reading polygon file: " + path);
  EXPECT_EQ(polygonRefusal("2000000000\n0 0\n"), "  *** Error reading polygon file: " + path);
  EXPECT_EQ(polygonRefusal("-4\n0 0\n"), "  *** Line 1 of " + path + " is no number of points: -4");
  EXPECT_EQ(polygonRefusal("99999999999\n"), "  *** Line 1 of " + path + " is no number of points: 99999999999");
  EXPECT_EQ(polygonRefusal("many\n"), "  *** Line 1 of " + path + " is no number of points: many");
  EXPECT_EQ(polygonRefusal("3\n0 0\n1\n2 2\n"), "  *** Line 3 of " + path + " holds no point: 1");
}

TEST_F(SegySelectTest, PolygonsKeepWhatTheyWindAround) {
  limitByPolygonFile("5\n0 0\n10 0\n10 10\n5 2\n0 10\n");
  ASSERT_EQ(initPolygon(), 1);
  EXPECT_TRUE(keeps(2, 3));
  EXPECT_FALSE(keeps(5, 5));   // in the box, in the notch
  EXPECT_FALSE(keeps(11, 3));  // outside the box
  SgyParams.polyParams.polyType = LS_EXCLUSION;
  EXPECT_FALSE(keeps(2, 3));
  EXPECT_TRUE(keeps(5, 5));
  EXPECT_TRUE(keeps(1000, 3));
  endRangeLimit();
  EXPECT_EQ(readFile(folder.path("RangeLimitLogFile.txt")), "2.0000   3.0000\n5.0000   5.0000\n1000.0000   3.0000\n");
}

TEST_F(SegySelectTest, TypedPolygonsHaveTenPointsAtMostAndLogToTheDefaultDirectory) {
  SgyParams.rangeLimit = true;
  SgyParams.polyParams.type = PS_TYPED;
  SgyParams.polyParams.numPoints = 400;
  SgyParams.polyParams.primary[9] = 6;
  SgyParams.polyParams.secondary[5] = -2;
  ASSERT_EQ(initPolygon(), 1);
  EXPECT_EQ(RangePolygon.size(), 11U);
  EXPECT_EQ((std::vector<double>{MinX, MaxX, MinY, MaxY}), (std::vector<double>{0, 6, -2, 0}));
  EXPECT_TRUE(exists("RangeLimitLogFile.txt"));
  EXPECT_TRUE(std::filesystem::equivalent(SgyParams.polyParams.dir, folder.path("")));
}

TEST_F(SegySelectTest, ListsIncludeAndExcludeByExactValues) {
  pointsOf("5 1\n7 2\n", true);
  limitByList("5 1\n7 2\n7 2\n", true);
  ASSERT_EQ(initPointsList(), 1);
  EXPECT_TRUE(keeps(5, 1));
  EXPECT_TRUE(keeps(7, 2));
  EXPECT_FALSE(keeps(5, 2));
  SgyParams.listParams.listType = LS_EXCLUSION;
  EXPECT_FALSE(keeps(7, 2));
  EXPECT_TRUE(keeps(7, 1));
  endRangeLimit();

  limitByList("");
  SgyParams.listParams.listType = LS_INCLUSION;
  ASSERT_EQ(initPointsList(), 1);
  EXPECT_FALSE(keeps(0, 0));
  SgyParams.rangeLimit = false;
  EXPECT_TRUE(keeps(0, 0));
}

TEST_F(SegySelectTest, TheKeptRangeIsCarriedFromJobToJobAndNoNanMovesIt) {
  limitByList("-100 - 100\n");
  ASSERT_EQ(initPointsList(), 1);
  ASSERT_TRUE(keeps(5, 0));
  endRangeLimit();
  const double low = MinPrimary;
  const double high = MaxPrimary;
  EXPECT_LE(low, 5);
  ASSERT_EQ(initPointsList(), 1);
  ASSERT_TRUE(keeps(7, 0));
  EXPECT_EQ(MinPrimary, low);
  EXPECT_EQ(MaxPrimary, std::max(high, 7.0));

  SgyParams.listParams.primType = DT_FLOAT32;
  EXPECT_FALSE(keeps(0x7FC00000, 0));  // not a number: in no list
  SgyParams.listParams.listType = LS_EXCLUSION;
  EXPECT_TRUE(keeps(0x7FC00000, 0));
  EXPECT_EQ(MinPrimary, low);
  EXPECT_EQ(MaxPrimary, std::max(high, 7.0));
}

TEST_F(SegySelectTest, AFullDiskEndsTheLogOnly) {
  limitByList("1\n");
  ASSERT_EQ(initPointsList(), 1);
  LogFile = openFile("/dev/full", "w");
  forgetConsole();
  for (int i = 0; i < 60000; ++i) ASSERT_TRUE(keeps(1, 0));
  endRangeLimit();
  EXPECT_EQ(count("  *** Error writing to range limit log file."), 1);
}

TEST(SegyKeys, AreReadBigEndianAndSigned) {
  const unsigned char bytes[] = {0xFF, 0xFE, 0x12, 0x34};
  const char* const at = reinterpret_cast<const char*>(bytes);
  EXPECT_EQ(getValue(at, 0), -1.0);
  EXPECT_EQ(getValue(at, 1), -2.0);
  EXPECT_EQ(getValue(at, 2), static_cast<double>(static_cast<std::int32_t>(0xFFFE1234U)));
  const unsigned char quarter[] = {0xBE, 0x80, 0x00, 0x00};
  EXPECT_EQ(getValue(reinterpret_cast<const char*>(quarter), 3), -0.25);
  EXPECT_EQ(getValue(at, 4), 0.0);
}

// ---- the heap's order -------------------------------------------------------------------------------------------

/// The heap sort of textbooks, over whole records, with the rule that a child equal to the record aside moves up.
template <typename Record, typename Below>
void textbookHeapSort(std::vector<Record>& records, Below below) {
  const std::size_t n = records.size();
  std::vector<Record> heap(n + 1);
  std::copy(records.begin(), records.end(), heap.begin() + 1);
  const auto siftDown = [&](std::size_t root, std::size_t end) {
    const Record aside = heap[root];
    std::size_t hole = root;
    while (2 * hole <= end) {
      std::size_t child = 2 * hole;
      if (child + 1 <= end && below(heap[child], heap[child + 1])) child = child + 1;
      if (below(heap[child], aside)) break;
      heap[hole] = heap[child];
      hole = child;
    }
    heap[hole] = aside;
  };
  for (std::size_t root = n / 2; root >= 1; --root) siftDown(root, n);
  for (std::size_t end = n; end > 1; --end) {
    std::swap(heap[1], heap[end]);
    siftDown(1, end - 1);
  }
  std::copy(heap.begin() + 1, heap.end(), records.begin());
}

bool belowItem(const SortItem& a, const SortItem& b) {
  if (a.primary < b.primary) return true;
  if (!(a.primary == b.primary)) return false;
  if (a.secondary < b.secondary) return true;
  return a.secondary == b.secondary && a.tertiary < b.tertiary;
}

std::vector<int> sizesOf(const std::vector<SortItem>& items) {
  std::vector<int> sizes;
  for (const SortItem& item : items) sizes.push_back(item.size);
  return sizes;
}

TEST(SegySort, OrdersAsTheTextbookHeapDoesEqualRecordsIncluded) {
  std::mt19937 random(7);
  const auto upTo = [&random](int limit) { return static_cast<double>(random() % static_cast<unsigned>(limit)); };
  const auto anyFloat = [&random] {
    return std::ldexp(static_cast<double>(random() % 4096U) - 2048, static_cast<int>(random() % 40U));
  };
  const auto made = [&](int kind, int i) -> SortItem {
    if (kind == 0) return {upTo(9) - 4, upTo(4), 0, 0, i};                                         // ties, ints
    if (kind == 1) return {upTo(3), upTo(3), upTo(3), 0, i};                                       // ties in three keys
    if (kind == 2) return {static_cast<double>(i * 37 % 1009), static_cast<double>(-i), 0, 0, i};  // no ties
    if (kind == 3) return {upTo(5) / 4, upTo(2) == 0 ? -0.0 : 0.0, 0, 0, i};                       // floats, both zeros
    if (kind == 4) return {upTo(8) / 10, upTo(8) / 10, upTo(8) / 10, 0, i};     // no floats: too wide for codes
    if (kind == 5) return {upTo(2147483647) - 1e9, upTo(2147483647), 0, 0, i};  // wide integers
    if (kind == 6) return {anyFloat(), anyFloat(), upTo(2), 0, i};
    if (kind == 7) return {upTo(3) == 0 ? std::nan("") : upTo(4), upTo(2), 0, 0, i};
    return {upTo(3) == 0 ? HUGE_VAL : upTo(4), upTo(2), 0, 0, i};
  };
  for (int kind = 0; kind < 9; ++kind) {
    for (const int count : {0, 1, 2, 3, 5, 64, 1001}) {
      SCOPED_TRACE(testing::Message() << "values " << kind << ", " << count << " records");
      std::vector<SortItem> items;
      for (int i = 0; i < count; ++i) items.push_back(made(kind, i));
      std::vector<SortItem> model = items;
      textbookHeapSort(model, belowItem);
      segySort(reinterpret_cast<char*>(items.data()), count, sizeof(SortItem));
      ASSERT_EQ(sizesOf(items), sizesOf(model));
    }
  }
}

TEST(SegySort, ItemsThatAreTooLargeForACopyAreArrangedInPlace) {
  constexpr std::size_t COUNT = 3200;
  constexpr std::size_t SIZE = 16000;
  std::vector<char> items(COUNT * SIZE);
  std::vector<SortItem> model;
  for (std::size_t i = 0; i < COUNT; ++i) {
    const double keys[3] = {static_cast<double>(i * 7 % 40), static_cast<double>(i * 3 % 5), static_cast<double>(i)};
    std::memcpy(items.data() + i * SIZE, keys, sizeof keys);
    model.push_back({keys[0], keys[1], 0, 0, static_cast<int>(i)});
  }
  textbookHeapSort(model, belowItem);
  segySort(items.data(), COUNT, SIZE);
  for (std::size_t i = 0; i < COUNT; ++i) {
    double number = 0;
    std::memcpy(&number, items.data() + i * SIZE + 16, sizeof number);
    ASSERT_EQ(static_cast<int>(number), model[i].size);
  }
}

TEST(SegySort, TakesItemsOfAnySizeUpToItsScratch) {
  for (const int size : {16, 24, 40, 16396}) {
    std::vector<char> items(static_cast<std::size_t>(size) * 50);
    for (int i = 0; i < 50; ++i) {
      const double keys[2] = {static_cast<double>(i * 37 % 10), static_cast<double>(i * 17 % 50)};
      std::memcpy(items.data() + i * size, keys, sizeof keys);
      if (size > 16) items[static_cast<std::size_t>(i * size + size - 1)] = static_cast<char>(i * 17 % 50);
    }
    segySort(items.data(), 50, size);
    for (int i = 1; i < 50; ++i) {
      EXPECT_LT(compareItems(items.data() + (i - 1) * size, items.data() + i * size, size), 0);
      double second = 0;
      std::memcpy(&second, items.data() + i * size + 8, sizeof second);
      if (size > 16) {
        EXPECT_EQ(items[static_cast<std::size_t>(i * size + size - 1)], static_cast<char>(second));
      }
    }
  }
  std::vector<char> tooLarge(2 * 16397, 'x');
  segySort(tooLarge.data(), 2, 16397);
  EXPECT_EQ(tooLarge, std::vector<char>(2 * 16397, 'x'));
}

}  // namespace
