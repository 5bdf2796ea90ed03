#include "libkyr/piecereader.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <random>
#include <span>
#include <vector>

#include "libkyr/files.h"

namespace {

TEST(PieceReader, HandsOutPiecesOfAnySizeWhileItReadsAhead) {
  std::vector<char> bytes(20'000'003);
  std::mt19937 fill(7);
  for (char& byte : bytes) byte = static_cast<char>(fill());
  const FileHandle file(std::tmpfile());
  ASSERT_EQ(writeAll(fileno(file.get()), bytes.data(), bytes.size()), bytes.size());
  for (const std::size_t most : {5'000UL, 70'000UL, 3'000'000UL, 9'000'000UL}) {
    PieceReader reader;
    std::mt19937 random(static_cast<unsigned>(most));
    std::vector<char> lent;  // what was handed out, as it was until the refill
    std::span<const char> last;
    reader.beforeRefill = [&] { EXPECT_TRUE(std::ranges::equal(last, lent)); };
    reader.begin(file.get(), 3);
    std::size_t place = 3;
    while (place < bytes.size()) {
      const std::size_t wanted = random() % most + 1;
      const auto piece = random() % 4 == 0 ? reader.peek(wanted) : reader.take(wanted);
      const std::size_t there = std::min(wanted, bytes.size() - place);
      ASSERT_TRUE(std::ranges::equal(piece, std::span(bytes).subspan(place, there))) << most << " at " << place;
      last = piece;
      lent.assign(piece.begin(), piece.end());
      if (reader.take(0).data() == piece.data() + piece.size()) place += there;
    }
    EXPECT_TRUE(reader.take(1).empty() && !reader.failed());
    EXPECT_EQ(reader.place(), bytes.size());
  }
}

}  // namespace
