// tapetool: makes, lists and compares the cartridges of virtual drives, and puts them into drives.
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "libkyr/output.h"
#include "quarlo/tapelib/driver/drive_file.h"
#include "quarlo/tapelib/driver/tap_file.h"

namespace fs = std::filesystem;
using Kind = TapFile::Kind;

namespace {

constexpr const char* kUsage =
    "usage: tapetool make-drive FOLDER NAME...       drives NAME.drive, each with a blank cartridge NAME.tap\n"
    "       tapetool insert DRIVE-FILE CARTRIDGE     puts a cartridge into a drive\n"
    "       tapetool eject DRIVE-FILE                takes the cartridge out\n"
    "       tapetool blank CARTRIDGE                 a cartridge with nothing on it\n"
    "       tapetool sample CARTRIDGE                a cartridge with three small files of SEG Y shape\n"
    "       tapetool badblock CARTRIDGE NUMBER       makes a block unreadable (blocks and marks counted from 0)\n"
    "       tapetool list CARTRIDGE                  block sizes and marks, with a sum for each file\n"
    "       tapetool compare CARTRIDGE CARTRIDGE     blocks and marks compared, closing marks told apart\n";

int complain(const std::string& what, int error) {
  std::fprintf(stderr, "tapetool: %s: %s\n", what.c_str(), std::strerror(error));
  return 2;
}

bool openTape(TapFile& tape, const std::string& path) {
  const int error = tape.open(path);
  if (error != 0) complain(path, error);
  return error == 0;
}

int makeBlank(const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "wbx");
  if (file == nullptr) return complain(path, errno);
  return std::fclose(file) == 0 ? 0 : complain(path, errno);
}

// ---- drives -----------------------------------------------------------------------------------------------------

std::set<int> takenIds(const std::string& folder) {
  std::set<int> ids;
  std::vector<std::string> paths;
  findDriveFiles(folder, paths);
  for (const std::string& path : paths) {
    DriveDescription drive;
    std::string problem;
    if (readDriveFile(path, drive, problem)) ids.insert(drive.id);
  }
  return ids;
}

int makeDrive(const std::string& folder, const std::string& name) {
  const fs::path base = fs::path(folder) / name;
  const std::string cartridge = base.string() + ".tap";
  if (fs::exists(base.string() + ".drive")) return complain(base.string() + ".drive", EEXIST);
  if (!fs::exists(cartridge))
    if (const int result = makeBlank(cartridge); result != 0) return result;
  DriveDescription drive;
  drive.model = name;
  drive.cartridge = name + ".tap";
  const std::set<int> taken = takenIds(folder);
  while (taken.count(drive.id) != 0) ++drive.id;
  const int error = writeDriveFile(base.string() + ".drive", drive);
  return error == 0 ? 0 : complain(base.string() + ".drive", error);
}

int makeDrives(const std::vector<std::string>& arguments) {
  std::error_code error;
  fs::create_directories(arguments[0], error);
  if (error) return complain(arguments[0], error.value());
  for (std::size_t i = 1; i < arguments.size(); ++i)
    if (const int result = makeDrive(arguments[0], arguments[i]); result != 0) return result;
  return 0;
}

int setCartridge(const std::string& path, const std::string& cartridge) {
  DriveDescription drive;
  std::string problem;
  if (!readDriveFile(path, drive, problem)) {
    std::fprintf(stderr, "tapetool: %s: %s\n", path.c_str(), problem.c_str());
    return 2;
  }
  std::error_code error;
  if (!cartridge.empty() && !fs::is_regular_file(cartridge, error)) return complain(cartridge, ENOENT);
  drive.cartridge = cartridge.empty() ? "" : fs::absolute(cartridge).string();
  const int failed = writeDriveFile(path, drive);
  return failed == 0 ? 0 : complain(path, failed);
}

// ---- cartridges -------------------------------------------------------------------------------------------------

/// The first block of a line: a text header as SEG Y tapes begin with, in ASCII.
std::string textHeader(int line) {
  std::string text(3200, ' ');
  char first[80];
  std::snprintf(first, sizeof first, "C 1 SAMPLE LINE %d, MADE BY TAPETOOL", line);
  for (int card = 0; card < 40; ++card) {
    char number[8];
    std::snprintf(number, sizeof number, "C%2d ", card + 1);
    text.replace(static_cast<std::size_t>(card) * 80, 4, number);
  }
  return text.replace(0, std::strlen(first), first);
}

void storeBig16(std::string& block, std::size_t at, int value) {
  block[at] = static_cast<char>(value >> 8);
  block[at + 1] = static_cast<char>(value);
}

/// 500 samples of 4 bytes at 2 ms, IBM floats.
std::string binaryHeader(int line) {
  std::string header(400, '\0');
  storeBig16(header, 6, line);
  storeBig16(header, 12, 24);    // traces per record
  storeBig16(header, 16, 2000);  // microseconds
  storeBig16(header, 20, 500);   // samples
  storeBig16(header, 24, 1);     // IBM floats
  return header;
}

std::string trace(int line, int number) {
  std::string block(240 + 500 * 4, '\0');
  storeBig16(block, 2, number);
  storeBig16(block, 10, 1000 * line + number / 24);
  storeBig16(block, 14, number % 24 + 1);
  storeBig16(block, 114, 500);
  storeBig16(block, 116, 2000);
  for (int i = 0; i < 500; ++i) {  // small positive IBM numbers, different in every trace
    const std::size_t at = 240 + static_cast<std::size_t>(i) * 4;
    block[at] = 0x42;
    block[at + 1] = static_cast<char>((i * (number + line)) & 0x7F);
    block[at + 2] = static_cast<char>(number);
  }
  return block;
}

int writeBlock(TapFile& tape, const std::string& block) {
  return tape.writeBlock(block.data(), static_cast<std::uint32_t>(block.size()));
}

int makeSample(const std::string& path) {
  if (const int result = makeBlank(path); result != 0) return result;
  TapFile tape;
  if (!openTape(tape, path)) return 2;
  int error = 0;
  for (int line = 1; line <= 3 && error == 0; ++line) {
    error = writeBlock(tape, textHeader(line));
    if (error == 0) error = writeBlock(tape, binaryHeader(line));
    for (int number = 1; number <= 48 * line && error == 0; ++number) error = writeBlock(tape, trace(line, number));
    if (error == 0) error = tape.writeMark();
  }
  if (error == 0) error = tape.writeMark();
  return error == 0 ? 0 : complain(path, error);
}

/// Sets the class of block `number` to "unreadable", in the word before it and in the one behind it.
int spoil(const std::string& path, const std::string& numberText) {
  char* end = nullptr;
  const long number = std::strtol(numberText.c_str(), &end, 10);
  TapFile tape;
  if (*end != '\0' || number < 0) return complain(numberText, EINVAL);
  if (!openTape(tape, path)) return 2;
  TapFile::Element element = tape.ahead();
  for (; tape.number() < number && element.kind != Kind::END && element.kind != Kind::DAMAGED; element = tape.ahead())
    tape.pass(element);
  if (element.kind != Kind::BLOCK) return complain(path + ": block " + numberText, ENOENT);
  const unsigned char top = static_cast<unsigned char>(0x80 | (element.length >> 24));
  for (const off_t word : {element.data - 4, element.next - 4})
    if (pwrite(tape.fd(), &top, 1, word + 3) != 1) return complain(path, errno);
  return 0;
}

// ---- listing ----------------------------------------------------------------------------------------------------

/// The FNV-1a sum of bytes, carried on from `sum`.
std::uint64_t sumOf(std::uint64_t sum, const char* bytes, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) sum = (sum ^ static_cast<unsigned char>(bytes[i])) * 0x100000001B3ULL;
  return sum;
}

/// Equal blocks in a row are told in one line; a file's sum is that of its blocks' bytes.
class Lister {
 public:
  void block(const TapFile::Element& element, const char* bytes) {
    const bool bad = element.kind == Kind::BAD_BLOCK;
    if (run_ > 0 && (element.length != length_ || bad != bad_)) endRun();
    length_ = element.length;
    bad_ = bad;
    ++run_;
    ++blocks_;
    bytes_ += element.length;
    if (!bad) sum_ = sumOf(sum_, bytes, element.length);
  }
  void mark() {
    endRun();
    if (blocks_ > 0)
      std::printf("mark                       file %d: %s\n", ++file_, totals().c_str());
    else
      std::printf("mark\n");
    blocks_ = 0;
    bytes_ = 0;
    sum_ = kStart;
  }
  void end() {
    endRun();
    if (blocks_ > 0) std::printf("no mark                    file %d: %s\n", ++file_, totals().c_str());
    std::printf("end\n");
  }

 private:
  void endRun() {
    if (run_ > 0) std::printf("%10u bytes x %ld%s\n", length_, run_, bad_ ? "  UNREADABLE" : "");
    run_ = 0;
  }
  std::string totals() const {
    char text[96];
    std::snprintf(text, sizeof text, "%ld blocks, %lld bytes, sum %016llx", blocks_, bytes_,
                  static_cast<unsigned long long>(sum_));
    return text;
  }

  static constexpr std::uint64_t kStart = 0xCBF29CE484222325ULL;
  std::uint32_t length_ = 0;
  bool bad_ = false;
  long run_ = 0;
  long blocks_ = 0;
  long long bytes_ = 0;
  std::uint64_t sum_ = kStart;
  int file_ = 0;
};

int list(const std::string& path) {
  TapFile tape;
  Lister lister;
  std::vector<char> bytes;
  if (!openTape(tape, path)) return 2;
  for (;;) {
    const TapFile::Element element = tape.ahead();
    if (element.kind == Kind::END || element.kind == Kind::DAMAGED) {
      lister.end();
      if (element.kind == Kind::END) return 0;
      std::fprintf(stderr, "tapetool: %s: %s\n", path.c_str(), tape.damage().c_str());
      return 1;
    }
    if (element.kind == Kind::MARK) {
      lister.mark();
    } else {
      bytes.resize(element.length);
      if (!tape.copy(element, bytes.data(), bytes.size())) return complain(path, EIO);
      lister.block(element, bytes.data());
    }
    tape.pass(element);
  }
}

// ---- comparing --------------------------------------------------------------------------------------------------

/// One side of a comparison.
struct Side {
  std::string path;
  TapFile tape;
  TapFile::Element element;
  std::vector<char> bytes;

  bool next() {
    element = tape.ahead();
    bytes.resize(element.length);
    return element.kind != Kind::DAMAGED && tape.copy(element, bytes.data(), bytes.size());
  }
  /// Marks from here to the end of the recording, -1 when blocks are left.
  long closingMarks() {
    for (long marks = 0;; ++marks) {
      if (element.kind == Kind::END) return marks;
      if (element.kind != Kind::MARK) return -1;
      tape.pass(element);
      if (!next()) return -1;
    }
  }
};

std::string describe(const TapFile::Element& element) {
  switch (element.kind) {
    case Kind::BLOCK:
      return "a block of " + std::to_string(element.length) + " bytes";
    case Kind::BAD_BLOCK:
      return "an unreadable block";
    case Kind::MARK:
      return "a mark";
    case Kind::END:
      return "the end";
    case Kind::DAMAGED:
      break;
  }
  return "damage";
}

int report(Side& a, Side& b, const char* what) {
  std::printf("number %ld: %s: %s against %s\n", a.tape.number(), what, describe(a.element).c_str(),
              describe(b.element).c_str());
  return 1;
}

int compareFrom(Side& a, Side& b, long marksSoFar) {
  for (;;) {
    if (!a.next() || !b.next()) return report(a, b, "cannot be read");
    if (a.element.kind != b.element.kind) {
      const long number = a.tape.number();
      const TapFile::Element first = a.element;
      const TapFile::Element second = b.element;
      const long marksA = a.closingMarks();
      const long marksB = b.closingMarks();
      if (marksA < 0 || marksB < 0) {
        std::printf("number %ld: %s against %s\n", number, describe(first).c_str(), describe(second).c_str());
        return 1;
      }
      std::printf("equal but for the closing marks: %ld against %ld\n", marksSoFar + marksA, marksSoFar + marksB);
      return 1;
    }
    if (a.element.kind == Kind::END) break;
    if (a.element.length != b.element.length) return report(a, b, "lengths differ");
    if (a.bytes != b.bytes) return report(a, b, "bytes differ");
    marksSoFar = a.element.kind == Kind::MARK ? marksSoFar + 1 : 0;
    a.tape.pass(a.element);
    b.tape.pass(b.element);
  }
  std::printf("equal: %ld blocks and marks\n", a.tape.number());
  return 0;
}

int compare(const std::string& first, const std::string& second) {
  Side a{first, {}, {}, {}};
  Side b{second, {}, {}, {}};
  if (!openTape(a.tape, first) || !openTape(b.tape, second)) return 2;
  return compareFrom(a, b, 0);
}

int run(const std::string& verb, const std::vector<std::string>& arguments) {
  const std::size_t count = arguments.size();
  if (verb == "make-drive" && count >= 2) return makeDrives(arguments);
  if (verb == "insert" && count == 2) return setCartridge(arguments[0], arguments[1]);
  if (verb == "eject" && count == 1) return setCartridge(arguments[0], "");
  if (verb == "blank" && count == 1) return makeBlank(arguments[0]);
  if (verb == "sample" && count == 1) return makeSample(arguments[0]);
  if (verb == "badblock" && count == 2) return spoil(arguments[0], arguments[1]);
  if (verb == "list" && count == 1) return list(arguments[0]);
  if (verb == "compare" && count == 2) return compare(arguments[0], arguments[1]);
  std::fputs(kUsage, stderr);
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  std::signal(SIGXFSZ, SIG_IGN);  // an error of the write then
  const std::vector<std::string> arguments(argv + std::min(argc, 2), argv + argc);
  return endOfOutput("tapetool", run(argc > 1 ? argv[1] : "", arguments), 2);
}
