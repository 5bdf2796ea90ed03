// Recordings made by others, where QUARLO_SHARED_DATA names their folder; an independent reader judges what was
// written, where it is installed.

#include <gtest/gtest.h>

#include <set>

#include "quarlo/tapelib/frame/jobframe.h"
#include "tests/segycopy/segy_fixture.h"
#include "tests/support/segy_reader.h"

namespace {

namespace fs = std::filesystem;

/// Bytes 9, 21 and 189 and the sum of the samples of every trace, a line each, as the reader has them.
std::string asReaderSeesIt(const std::string& path) {
  return python(
      "import segyio,sys\n"
      "f=segyio.open(sys.argv[1],ignore_geometry=True)\n"
      "for i in range(f.tracecount):\n"
      "  h=f.header[i]; print(h[9],h[21],h[189],repr(float(f.trace[i].sum())))",
      path);
}

class SegyRealTest : public SegyTest {
 protected:
  void SetUp() override {
    const char* shared = std::getenv("QUARLO_SHARED_DATA");
    if (shared == nullptr || !fs::is_directory(fs::path(shared) / "segy"))
      GTEST_SKIP() << "QUARLO_SHARED_DATA names no folder with recordings";
    root = fs::path(shared) / "segy";
  }
  std::string survey() const { return readFile((root / "segysak/test-geometry.sgy").string()); }
  void useSurvey() { fs::copy_file(root / "segysak/test-geometry.sgy", folder.path("in.sgy")); }

  /// The survey's traces (256 bytes each) for which `keep` says yes, behind its headers.
  template <typename Keep>
  std::string selected(Keep keep) const {
    const std::string all = survey();
    std::string some = all.substr(0, 3600);
    for (std::size_t place = 3600; place + 256 <= all.size(); place += 256)
      if (keep(bigAt(all, place + 188), bigAt(all, place + 20))) some += all.substr(place, 256);
    EXPECT_GT(some.size(), 3600U);
    EXPECT_LT(some.size(), all.size());
    return some;
  }

  fs::path root;
};

TEST_F(SegyRealTest, EveryFileComesOutAsItWasUpToItsLastWholeTrace) {
  int copied = 0;
  for (const auto& entry : fs::recursive_directory_iterator(root)) {
    if (!entry.is_regular_file()) continue;
    SCOPED_TRACE(entry.path().string());
    fs::copy_file(entry.path(), folder.path("in.sgy"), fs::copy_options::overwrite_existing);
    const std::string in = readFile(folder.path("in.sgy"));
    ASSERT_GE(in.size(), 3600U);
    const auto field = [&in](std::size_t place) { return static_cast<std::uint32_t>(bigAt(in, place)) >> 16; };
    const std::size_t trace = 240 + field(3220) * (field(3224) == 3 ? 2U : 4U);
    const int result = copyFile("in.sgy");
    if (field(3220) == 0 || (in.size() > 3600 && in.size() < 3600 + trace)) {
      EXPECT_EQ(result, JOB_FAILED);
      EXPECT_EQ(output(), "");
      continue;
    }
    EXPECT_EQ(result, JOB_OK);
    EXPECT_EQ(output(), in.substr(0, 3600 + (in.size() - 3600) / trace * trace));
    ++copied;
  }
  EXPECT_GE(copied, 25);
}

TEST_F(SegyRealTest, SelectsByListAndPolygonAsAnIndependentLoopDoes) {
  useSurvey();
  SgyParams.listParams.primByte = SgyParams.polyParams.primByte = 189;
  limitByList("10100 - 10110\n10140\n");
  EXPECT_EQ(copyFile("in.sgy"), JOB_OK);
  EXPECT_EQ(output(), selected([](int x, int) { return (x >= 10100 && x <= 10110) || x == 10140; }));
  limitByList("10100 - 10110 2200 - 2300\n10140 2150\n", true);
  SgyParams.listParams.listType = LS_EXCLUSION;
  EXPECT_EQ(copyFile("in.sgy"), JOB_OK);
  EXPECT_EQ(output(), selected([](int x, int y) {
              return !(x >= 10100 && x <= 10110 && y >= 2200 && y <= 2300) && !(x == 10140 && y == 2150);
            }));
  // A triangle whose corners are no traces: what is inside is plain arithmetic.
  limitByPolygonFile("3\n10099.5 2149.5\n10149.5 2149.5\n10099.5 2349.5\n");
  EXPECT_EQ(copyFile("in.sgy"), JOB_OK);
  EXPECT_EQ(output(), selected([](int x, int y) {
              const double right = x - 10099.5;
              const double up = y - 2149.5;
              return right > 0 && up > 0 && up < 200.0 * (1 - right / 50.0);
            }));
}

TEST_F(SegyRealTest, SortsAndSplitsWhatAnIndependentReaderReadsBack) {
  if (!haveSegyReader()) GTEST_SKIP() << "python3-segyio is not installed";
  useSurvey();
  sortTraces();
  SgyParams.sortPrimByte = 21;
  SgyParams.sortSecByte = 189;
  EXPECT_EQ(copyFile("in.sgy", "sorted.sgy"), JOB_OK);
  const auto linesOf = [](const std::string& text) {
    std::vector<std::vector<double>> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
      std::istringstream words(line);
      std::vector<double> values;
      for (double value = 0; words >> value;) values.push_back(value);
      lines.push_back(values);
    }
    return lines;
  };
  const auto before = linesOf(asReaderSeesIt(folder.path("in.sgy")));
  ASSERT_EQ(before.size(), 12322U);
  auto expected = before;
  std::sort(expected.begin(), expected.end(),
            [](const auto& a, const auto& b) { return std::pair(a[1], a[2]) < std::pair(b[1], b[2]); });
  EXPECT_EQ(linesOf(asReaderSeesIt(folder.path("sorted.sgy"))), expected);

  SgyParams.sort = false;
  SgyParams.multipleOut = true;
  SgyParams.recordByte = 189;
  SgyParams.bytesPerPart = 1e6;
  EXPECT_EQ(copyFile("in.sgy", "part.sgy"), JOB_OK);
  std::vector<std::vector<double>> together;
  std::set<double> ended;
  for (const char* name : {"part.sgy", "part001.sgy", "part002.sgy", "part003.sgy"}) {
    if (!exists(name)) continue;
    const auto part = linesOf(asReaderSeesIt(folder.path(name)));
    ASSERT_FALSE(part.empty());
    for (const auto& line : part) EXPECT_FALSE(ended.contains(line[2]));  // no record lies in two volumes
    ended.insert(part.back()[2]);
    together.insert(together.end(), part.begin(), part.end());
  }
  EXPECT_GE(ended.size(), 3U);
  EXPECT_EQ(together, before);
}

}  // namespace
