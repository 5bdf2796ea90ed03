// The example bytes of docs/format-kyr.md, built from the page, are a dataset; and the page's words alone give its
// sums.
#include <bit>
#include <sstream>

#include "libkyr/byteorder.h"
#include "tests/kyr/dataset_fixture.h"

namespace {

/// The bytes of the page's dump: "OFFSET  hex bytes  |text|", a star for lines like the one before.
std::string exampleBytes() {
  std::istringstream lines(readFile(QUARLO_SOURCE_DIR "/docs/format-kyr.md"));
  std::string bytes;
  std::string row;
  for (std::string line; std::getline(lines, line);) {
    if (line.size() < 12 || !line.starts_with("    0000")) continue;
    std::istringstream words(line.substr(0, line.find('|')));
    std::size_t offset = 0;
    words >> std::hex >> offset;
    while (bytes.size() < offset) bytes += row;
    row.clear();
    for (int byte = 0; words >> std::hex >> byte;) row += static_cast<char>(byte);
    bytes += row;
  }
  return bytes;
}

/// The sum by the page's words, one word after the other.
std::uint64_t plainSum(std::uint64_t seed, const std::string& bytes) {
  std::uint64_t lanes[4] = {seed, seed + 1, seed + 2, seed + 3};
  const auto take = [](std::uint64_t lane, std::uint64_t word) {
    return std::rotl((lane ^ word) * 0x9E3779B97F4A7C15ULL, 29);
  };
  for (std::size_t i = 0; i < bytes.size() / 8; ++i) lanes[i % 4] = take(lanes[i % 4], loadLe64(bytes.data() + 8 * i));
  std::uint64_t sum = seed;
  for (const std::uint64_t lane : lanes) sum = take(sum, lane);
  return sum;
}

class DatasetExample : public DatasetTest {};

TEST_F(DatasetExample, OpensAndHoldsWhatThePageSays) {
  const std::string bytes = exampleBytes();
  ASSERT_EQ(bytes.size(), 4096 + 2 * 840U);
  writeFile("e.kyr", bytes);
  const Link link = open("e.kyr", kStackedData);
  ASSERT_TRUE(IsLinkValid(link));
  EXPECT_EQ(get(link, dsRecords), 1);
  EXPECT_EQ(get(link, dsTracesPerRecord), 2);
  EXPECT_EQ(get(link, dsSamples), 3);
  int interval = 0;
  GetDatasetProperty(record.get(), link, dsSampleInterval, longIntType, gMicrosecondsUnits, &interval);
  EXPECT_EQ(interval, 2000);
  const Got first = trace(link, 1, 1, 3);
  EXPECT_EQ(std::tuple(first.result, first.header.words[trFieldFile], first.header.words[trChannel]),
            std::tuple(kyrOk, 901U, 7U));
  EXPECT_EQ(first.samples, (std::vector<float>{1, -0.5F, 2}));
  EXPECT_TRUE(trace(link, 1, 2, 3).isDead(killNeverWritten));
  EXPECT_TRUE(lines().empty());

  const std::uint64_t id = loadLe64(bytes.data() + 40);
  EXPECT_EQ(loadLe64(bytes.data() + 4088), plainSum(0, bytes.substr(0, 4088)));
  EXPECT_EQ(loadLe64(bytes.data() + 4104), plainSum(id, bytes.substr(4120, 800)));
  EXPECT_EQ(loadLe64(bytes.data() + 4112), plainSum(id ^ 0xA5A5A5A5A5A5A5A5ULL, bytes.substr(4920, 16)));

  // In a further file the slots are counted on.
  make("p.kyr", {2, 3, 3, 1});
  const std::string part = readFile("p.kyr.002");
  EXPECT_EQ(loadLe64(part.data() + 4104), plainSum(loadLe64(part.data() + 40) ^ 3U, part.substr(4120, 800)));
}

}  // namespace
