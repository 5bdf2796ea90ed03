// A short run of a fuzz target without a fuzzer: seeds made of the words that the formats know, then damaged at random,
// the same ones at every run: 5,000, or as many as the argument -runs=NUMBER says. With file names as arguments those
// files are run instead, such as a fuzzer's findings.

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using Bytes = std::vector<std::uint8_t>;

/// Lengths, marks and ends as tape-image files and cartridges have them, and values at the edges.
constexpr std::array<std::uint32_t, 14> WORDS = {
    0, 1, 2, 5, 31, 32, 4096, 0x746C7631, 0x01000001, 0xF0F0F0F0, 0xFFFFFFFF, 0xFFFFFFFE, 0x80000005, 0x7FFFFFFF};

Bytes seed(std::mt19937& random) {
  Bytes bytes;
  for (std::size_t words = random() % 120; words > 0; --words) {
    const std::uint32_t word =
        random() % 4 == 0 ? static_cast<std::uint32_t>(random()) : WORDS[random() % WORDS.size()];
    for (int shift = 0; shift < 32; shift += 8) bytes.push_back(static_cast<std::uint8_t>(word >> shift));
  }
  for (std::size_t damage = random() % 4; damage > 0 && !bytes.empty(); --damage)
    bytes[random() % bytes.size()] = static_cast<std::uint8_t>(random());
  if (random() % 2 == 0 && !bytes.empty()) bytes.resize(random() % bytes.size());
  return bytes;
}

/// What users type into lists.
constexpr std::array<std::string_view, 16> TEXTS = {"0",  "1", "7",    "12", "99",     "-3", "2.5", " - ",
                                                    "\n", " ", "\r\n", "\t", "H HEAD", "-",  "x",   "nan"};

Bytes textSeed(std::mt19937& random) {
  Bytes bytes;
  for (std::size_t words = random() % 60; words > 0; --words) {
    const std::string_view word = TEXTS[random() % TEXTS.size()];
    bytes.insert(bytes.end(), word.begin(), word.end());
    if (random() % 2 == 0) bytes.push_back(random() % 3 == 0 ? '\n' : ' ');
  }
  return bytes;
}

}  // namespace

int main(int argc, char** argv) {
  constexpr std::string_view option = "-runs=";
  const bool isCounted = argc == 2 && std::string_view(argv[1]).starts_with(option);
  const int runs = isCounted ? std::atoi(argv[1] + option.size()) : argc == 1 ? 5000 : 0;
  for (int i = 1; !isCounted && i < argc; ++i) {
    std::ifstream file(argv[i], std::ios::binary);
    const Bytes bytes{std::istreambuf_iterator<char>(file), {}};
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
  }
  std::mt19937 random(1);
  for (int run = 0; run < runs; ++run) {
    const Bytes bytes = run % 2 == 0 ? seed(random) : textSeed(random);
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
  }
  return 0;
}
