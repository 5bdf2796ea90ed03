// The tape-image reader over any bytes: it ends, and answers no bytes but those of the file.

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>

#include "libkyr/files.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/formats/tpf.h"
#include "xvt/xvt.h"

void console_out(const char* /*textStr*/) {}
void console_printf(const char* /*format*/, ...) {}
void xvt_dm_post_error(const char* /*format*/, ...) {}

bool isByte(char one, std::uint8_t other) { return static_cast<std::uint8_t>(one) == other; }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr unsigned LIMIT = 4096;
  static std::FILE* const file = fdopen(memfd_create("tpf", MFD_CLOEXEC), "w+b");
  if (file == nullptr || ftruncate(fileno(file), 0) != 0 || writeAllAt(fileno(file), data, size, 0) != size) return 0;
  tpf::Reader reader(file, LIMIT, "fuzz.tpf");
  std::size_t total = tpf::kHeaderSize;
  for (std::span<const char> block; reader.next(&block) != tpf::Item::Failed;) {
    const std::size_t at = total + tpf::kHeaderSize;
    total = at + block.size();
    if (block.size() > LIMIT || total > size || !std::equal(block.begin(), block.end(), data + at, isByte))
      std::abort();
    if (block.empty() && (size & 1) != 0) {
      (void)reader.bytesLeft();
      break;
    }
  }
  return 0;
}
