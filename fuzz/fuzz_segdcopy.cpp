// A whole SEG D copy from disk to disk of a damaged file. The first bytes choose the settings and where a sound file of
// three channel sets is damaged; what is behind them goes there. Whatever comes of it: the job ends, says so, closes
// what it opened, and the output is the beginning of the input.
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

#include "fuzz/whole_job.h"
#include "libkyr/text.h"
#include "quarlo/segdcopy/segdcopy.h"
#include "quarlo/tapelib/diskunit.h"

namespace {

std::string block32(std::initializer_list<std::pair<int, int>> places, std::size_t bytes = 32) {
  std::string block(bytes, '\0');
  for (const auto& [position, value] : places) block[static_cast<std::size_t>(position) - 1] = static_cast<char>(value);
  return block;
}

/// Two general headers, three channel sets of two traces each, an extended and an external block; 10 samples a trace.
std::string soundFile() {
  std::string file = block32({{2, 1},
                              {3, 0x80},
                              {4, 0x58},
                              {12, 0x10},
                              {23, 32},
                              {26, 0x8F},
                              {27, 0xFF},
                              {28, 1},
                              {29, 3},
                              {31, 1},
                              {32, 1}}) +
                     block32({{17, 20}});
  for (int set = 1; set <= 3; ++set) file += block32({{1, 1}, {2, set}, {6, 10}, {10, 2}});
  file += std::string(64, 'x');
  for (int trace = 0; trace < 6; ++trace) {
    file += block32({{2, 1}, {3, 1}, {4, trace / 2 + 1}, {6, trace % 2 + 1}, {10, 1}}, 20) + block32({{10, 10}}) +
            std::string(40, static_cast<char>('a' + trace));
  }
  return file;
}

void copyOnce(const Program& program, const std::string& file) {
  std::filesystem::remove("in.segd");  // a file cut to nothing and written anew is slow on some file systems
  std::ofstream("in.segd", std::ios::binary) << file;
  std::filesystem::remove("out/x_00001.sgd");
  UnitStruct* const units = getDevPtr();
  FILE_SPEC input{};
  copyText(input.dir.path, program.folder);
  copyText(input.name, "in.segd");
  require(openDiskUnit(&units[0], input, "rb"));
  units[1].fs = input;
  copyText(units[1].fs.dir.path, program.folder + "/out");
  copyText(units[1].fs.name, "x.sgd");
  units[1].type = UT_DISK;
  units[1].state = 1;
  const int result = doSegdCopy(units);
  require(result == 0 || result == -1);
  require(units[0].fp == nullptr && SgdParams.theFile == nullptr && SgdParams.logFp == nullptr);
  const std::string copy = contents("out/x_00001.sgd");
  require(copy.size() <= file.size() && file.compare(0, copy.size(), copy) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const Program program;
  constexpr std::size_t SETTINGS = 4;
  if (size < SETTINGS) return 0;
  segdInit();
  SgdParams.useLog = false;
  SgdParams.useScanHdr = (bytes[0] & 1) != 0;
  SgdParams.recLenOR = (bytes[0] & 2) != 0;
  SgdParams.ffidOption = false;
  std::string file = soundFile();
  const std::size_t place = (bytes[1] | std::size_t{bytes[2]} << 8) % (file.size() + 1);
  const std::string damage(bytes + SETTINGS, bytes + size);
  if ((bytes[0] & 4) != 0)
    file = damage;
  else if ((bytes[0] & 8) != 0)
    file.insert(place, damage);
  else
    file.replace(place, std::min(damage.size(), std::size_t{bytes[3]} % 8), damage, 0, std::size_t{bytes[3]} % 8);
  copyOnce(program, file);
  return 0;
}
