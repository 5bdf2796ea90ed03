// List and polygon files of any content: each is read to its points or refused with a line; every point is a number.

#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "libkyr/files.h"
#include "quarlo/segycopy/segycopy_params.h"
#include "quarlo/segycopy/segysel_list.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/frame/loglines.h"

#ifndef QUARLO_COLD  // there it comes with its room
SgyCopyParams SgyParams{};
#endif

namespace {

int linesSaid = 0;

/// The name of an open file that is nowhere in a directory.
class NamelessFile {
 public:
  NamelessFile(const std::uint8_t* data, std::size_t size) : file(std::tmpfile()) {
    if (file == nullptr || std::fwrite(data, 1, size, file) != size || std::fflush(file) != 0) std::abort();
    std::rewind(file);
  }
  ~NamelessFile() { std::fclose(file); }
  NamelessFile(const NamelessFile&) = delete;
  NamelessFile& operator=(const NamelessFile&) = delete;
  std::string path() const { return "/proc/self/fd/" + std::to_string(fileno(file)); }
  std::FILE* stream() const { return file; }

 private:
  std::FILE* file;
};

/// Numbers that end a range far away make lists of many millions of points, rightly: they take their time only.
bool standsForLittle(const std::uint8_t* data, std::size_t size) {
  int digits = 0;
  for (std::size_t i = 0; i < size; ++i) {
    const int c = data[i];
    digits = c >= '0' && c <= '9' ? digits + 1 : 0;
    if (digits > 2 || c == 'e' || c == 'E' || c == 'x' || c == 'X') return false;
  }
  return true;
}

void require(bool holds) {
  if (!holds) std::abort();
}

}  // namespace

void console_out(const char* /*textStr*/) { ++linesSaid; }
void console_printf(const char* /*format*/, ...) { ++linesSaid; }
void logBlank() {}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1) return 0;
  const bool secondary = (data[0] & 1) != 0;
  ++data;
  --size;
  const NamelessFile file(data, size);
  SgyParams.listParams.useSec = secondary;
  double values[4] = {};
  int ranges = 0;
  while (getRange(file.stream(), values, values + 1, values + 2, values + 3) != 0)
    require(values[1] >= values[0] && values[3] >= values[2] && ++ranges <= static_cast<int>(size));
  std::vector<PolygonElement> corners;
  linesSaid = 0;
  require(readPolygonFile(file.path(), &corners) ? !corners.empty() : linesSaid > 0);
  for (const PolygonElement& corner : corners) require(std::isfinite(corner.x) && std::isfinite(corner.y));
  if (!standsForLittle(data, size)) return 0;
  std::vector<RangeItem> points;
  linesSaid = 0;
  require(readListFile(file.path(), secondary, &points) || linesSaid > 0);
  for (const RangeItem& point : points) require(std::isfinite(point.primary) && std::isfinite(point.secondary));
  return 0;
}
