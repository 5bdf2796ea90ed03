// A whole SEG Y copy from disk to disk of a damaged file. The first bytes choose the settings and where a sound file of
// a few traces is damaged; what is behind them goes there, and into the list of a range limit. Whatever comes of it:
// the job ends and says so, no temporary file stays, and what a plain copy writes is the beginning of the input.

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

#include "fuzz/whole_job.h"
#include "libkyr/text.h"
#include "quarlo/segycopy/segycopy.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/frame/jobframe.h"
#include "tests/support/segy_files.h"

namespace {

std::string soundFile() {
  std::string file = segyText() + segyBinary(5);
  for (int i = 0; i < 6; ++i) file += segyTrace({7 - i, i % 3, i / 2, i}, 5, i);
  return file;
}

void chooseSettings(const Program& program, std::uint8_t choice) {
  segyInit();
  SgyParams.sort = (choice & 1) != 0;
  SgyParams.rangeLimit = (choice & 2) != 0;
  SgyParams.limitType = (choice & 4) != 0 ? LT_POLYGON : LT_LIST;
  SgyParams.multipleOut = (choice & 8) != 0;
  SgyParams.bytesPerPart = 4000;
  SgyParams.reportFFIDs = true;
  SgyParams.useTertiary = SgyParams.reverseSort = (choice & 16) != 0;
  SgyParams.listParams.useSec = (choice & 16) != 0;
  copyText(SgyParams.sortDir, program.folder);
  for (auto* const params : {&SgyParams.listParams.dir, &SgyParams.polyParams.dir}) copyText(*params, program.folder);
  copyText(SgyParams.listParams.file, "list.txt");
  copyText(SgyParams.polyParams.file, "list.txt");
}

int copyOnce(const Program& program) {
  UnitStruct* const units = getDevPtr();
  FILE_SPEC file{};
  copyText(file.dir.path, program.folder);
  copyText(file.name, "in.sgy");
  require(openDiskUnit(&units[0], file, "rb"));
  copyText(file.dir.path, program.folder + "/out");
  copyText(file.name, "x.sgy");
  require(openDiskUnit(&units[1], file, "w+b"));
  const int result = doSegyCopy(units);
  closeDiskUnit(&units[0]);
  require(closeDiskUnit(&units[1]) == 0);
  return result;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const Program program;
  constexpr std::size_t SETTINGS = 5;
  if (size < SETTINGS) return 0;
  std::string file = soundFile();
  const std::size_t place = (bytes[1] | std::size_t{bytes[2]} << 8) % (file.size() + 1);
  const std::size_t length = bytes[3] % 8;
  const std::string damage(bytes + SETTINGS, bytes + size);
  if ((bytes[4] & 1) != 0)
    file = damage;
  else if ((bytes[4] & 2) != 0)
    file.resize(place);
  else
    file.replace(place, std::min(damage.size(), length), damage, 0, length);
  makeFile("in.sgy", file);
  // Short numbers only: lists of many millions of points take their time, rightly.
  makeFile("list.txt", "0 - 3\n" + damage.substr(0, 8));
  chooseSettings(program, bytes[0]);
  const int result = copyOnce(program);
  require(result == JOB_OK || result == JOB_FAILED);
  require(!std::filesystem::exists("Sort.tmp") && !std::filesystem::exists("SegyCopy.idx"));
  if (!SgyParams.sort && !SgyParams.rangeLimit && !SgyParams.multipleOut) {
    const std::string copy = contents("out/x.sgy");
    require(copy.size() <= file.size() && file.compare(0, copy.size(), copy) == 0);
  }
  return 0;
}
