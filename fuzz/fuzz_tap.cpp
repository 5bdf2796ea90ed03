// Reads any bytes as a cartridge, forward and backward, and writes behind a place in it.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <utility>
#include <vector>

#include "quarlo/tapelib/driver/tap_file.h"

using Kind = TapFile::Kind;

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

bool isEnd(const TapFile::Element& element) { return element.kind == Kind::END || element.kind == Kind::DAMAGED; }

/// Every element lies in the file, and the way back meets what the way there met.
long walk(TapFile& tape, off_t size) {
  std::vector<char> bytes;
  std::vector<Kind> met;
  TapFile::Element element;
  for (element = tape.ahead(); !isEnd(element); element = tape.ahead()) {
    require(element.start >= 0 && element.data >= element.start && element.next <= size);
    require(element.next > tape.offset());
    bytes.resize(element.length);
    if (element.kind == Kind::BLOCK) require(tape.copy(element, bytes.data(), bytes.size()));
    met.push_back(element.kind);
    tape.pass(element);
  }
  const long count = tape.number();
  require(count == static_cast<long>(met.size()));
  for (element = tape.behind(); !isEnd(element); element = tape.behind()) {
    require(element.start < tape.offset());
    tape.passBack(element);
  }
  return count;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const int fd = memfd_create("cartridge", MFD_CLOEXEC);
  require(fd >= 0 && write(fd, data, size) == static_cast<ssize_t>(size));
  TapFile tape;
  tape.adopt(Descriptor(fd), true);
  walk(tape, static_cast<off_t>(size));
  // What is written stands there, whatever followed the place.
  tape.rewind();
  for (long i = size > 0 ? data[0] % 4 : 0; i > 0; --i)
    if (const TapFile::Element element = tape.ahead(); !isEnd(element)) tape.pass(element);
  const long before = tape.number();
  require(tape.writeBlock("block", 5) == 0 && tape.writeMark() == 0);
  tape.passBack(tape.behind());
  const TapFile::Element block = tape.behind();
  char bytes[5];
  require(block.kind == Kind::BLOCK && block.length == 5 && tape.copy(block, bytes, 5) && bytes[0] == 'b');
  tape.rewind();
  long count = 0;
  for (TapFile::Element element = tape.ahead(); !isEnd(element); element = tape.ahead()) {
    tape.pass(element);
    ++count;
  }
  require(count == before + 2 && tape.ahead().kind == Kind::END);
  return 0;
}
