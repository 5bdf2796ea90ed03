// The dump formats over any bytes, start byte and count. The bytes lie in a block of exactly their size, so that the
// sanitizers see one step too far; the lines are held to their rules.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <vector>

#include "quarlo/dump/dumpformat.h"

namespace {

int intAt(const std::uint8_t* bytes) {
  int value = 0;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

void require(bool holds) {
  if (!holds) std::abort();
}

long checkLines(std::string_view text) {
  constexpr std::size_t widest = 127;
  long lines = 1;
  std::size_t width = 0;
  for (const char character : text) {
    require(character == '\n' || (character >= ' ' && character < 127));
    width = character == '\n' ? 0 : width + 1;
    lines += character == '\n' ? 1 : 0;
    require(width <= widest);
  }
  require(width > 0);  // no newline at the end
  return lines;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* input, std::size_t size) {
  constexpr std::size_t header = 2 + 2 * sizeof(int);
  if (size < header) return 0;
  const DumpStyle style = {static_cast<DUMP_FORMAT>(input[0] % dumpFormats.size()), (input[1] & 1) != 0,
                           (input[1] & 2) != 0};
  const std::vector<char> block(input + header, input + size);
  const int nBytes = static_cast<int>(block.size());
  const DumpRange range = dumpRange(style.format, nBytes, intAt(input + 2), intAt(input + 2 + sizeof(int)));
  require(range.first >= 0 && range.count >= 0 && (range.count == 0 || range.first + range.count <= nBytes));
  if (range.count == 0) return 0;
  long lines = 0;
  const auto taker = [&lines](const char* text) { lines += checkLines(text); };
  require(formatDump({block.data() + range.first, static_cast<std::size_t>(range.count)}, range.first, style, taker) ==
          lines);
  return 0;
}
