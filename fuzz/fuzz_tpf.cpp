// The tape-image reader over any bytes: it ends, stays within its buffer, and never answers a length that is not there.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/formats/tpf.h"
#include "xvt/xvt.h"

void console_out(const char* /*textStr*/) {}
void console_printf(const char* /*format*/, ...) {}
void xvt_dm_post_error(const char* /*format*/, ...) {}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  constexpr unsigned LIMIT = 4096;
  std::vector<char> buffer(LIMIT);
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(fmemopen(const_cast<std::uint8_t*>(data), size, "rb"),
                                                             std::fclose);
  if (!file) return 0;
  (void)std::fseek(file.get(), tpf::kHeaderSize, SEEK_SET);
  tpf::Reader reader(file.get(), LIMIT, "fuzz.tpf");
  std::size_t total = tpf::kHeaderSize;
  for (int length = 0; reader.next(buffer.data(), &length) != tpf::Item::Failed;) {
    total += tpf::kHeaderSize + static_cast<std::size_t>(length);
    if (length < 0 || static_cast<unsigned>(length) > LIMIT || total > size) std::abort();
    if (length == 0 && (size & 1) != 0) {
      (void)reader.bytesLeft();
      break;
    }
  }
  return 0;
}
