// How fast the dump formats are made, window and file aside, beside the system's own dump programs on the same bytes in
// the page cache. Goals in MB of input a second: hexadecimal 600, integers 240, floats 90. bench/run measures the whole
// dump.
#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "quarlo/dump/dumpformat.h"
#include "tests/support/test_files.h"

namespace {

constexpr std::size_t kInputBytes = std::size_t{4} * 1024 * 1024;
constexpr std::size_t kBlockBytes = std::size_t{64} * 1024;

/// Samples as traces hold them: over some decades, of both signs, most of their digits noise.
std::string samples() {
  std::mt19937 random(1);
  std::normal_distribution<float> noise(0, 1);
  std::string bytes(kInputBytes, '\0');
  for (std::size_t at = 0; at < bytes.size(); at += sizeof(float)) {
    const float value = noise(random) * std::exp(3 * noise(random));
    std::memcpy(&bytes[at], &value, sizeof value);
  }
  return bytes;
}

struct Peer {
  DUMP_FORMAT format;
  const char* name;
  const char* command;
};

constexpr Peer kPeers[] = {
    {DF_HEX, "xxd", "xxd -c 32 -g 4"},          {DF_HEX, "od", "od -A d -w32 -t x4"},
    {DF_ASCII, "od", "od -A d -w80 -t c"},      {DF_EBCDIC, "od", "od -A d -w80 -t c"},
    {DF_SHORT, "od", "od -A d -w32 -t d2"},     {DF_LONG, "od", "od -A d -w32 -t d4"},
    {DF_IBM_FLOAT, "od", "od -A d -w32 -t f4"}, {DF_IEEE_FLOAT, "od", "od -A d -w32 -t f4"},
};

std::size_t characters = 0;

void formatAll(const std::string& input, const DumpStyle& style) {
  for (std::size_t at = 0; at < input.size(); at += kBlockBytes)
    formatDump(
        std::span(input).subspan(at, std::min(kBlockBytes, input.size() - at)), 0, style,
        [](const char* lines) { characters += std::strlen(lines); });
}

}  // namespace

int main() {
  const TestFolder folder;
  const std::string input = samples();
  writeFile("in.bin", input);
  for (const Peer& peer : kPeers)
    bench::compare(
        dumpFormats[peer.format], kInputBytes,
        [&] {
          formatAll(input, {peer.format, false, false});
        },
        peer.name, bench::shell(std::string(peer.command) + " in.bin >/dev/null"), 1.0);
  return characters == 0 ? 1 : 0;
}
