// The SEG D copy from disk to disk beside cp, in one large field file and in many small ones. Usage: segd_bench
// [megabytes]

#include <filesystem>
#include <fstream>

#include "bench/measure.h"
#include "libkyr/text.h"
#include "quarlo/segdcopy/segdcopy.h"
#include "quarlo/tapelib/dialogs/cons_win.h"
#include "quarlo/tapelib/diskunit.h"
#include "tests/segdcopy/segd_fixture.h"
#include "tests/support/test_files.h"
#include "tests/support/test_toolkit.h"

namespace {

constexpr int SAMPLES = 3000;
constexpr int TRACES_A_FILE = 240;

class Bench {
 public:
  Bench() {
    toolkit.openTaskWindow([](WINDOW, EVENT*) -> long { return 0; });
    initIO(getDevPtr());
    consInit();
    segdInit();
    SgdParams.useLog = false;
    for (const char* name : {"in", "out", "peer"}) std::filesystem::create_directory(name);
  }
  ~Bench() {
    unInitIO(getDevPtr());
    killConsole();
  }
  Bench(const Bench&) = delete;
  Bench& operator=(const Bench&) = delete;

  /// @return bytes of all files
  double makeInputs(int files, int sets) {
    std::filesystem::remove_all("in");
    std::filesystem::create_directory("in");
    FieldFile file;
    file.milliseconds = 2 * SAMPLES;
    file.sets.assign(static_cast<std::size_t>(sets), {TRACES_A_FILE, 2 * SAMPLES});
    file.extensions = 7;
    const std::string bytes = file.file();
    for (int i = 0; i < files; ++i) writeFile(folder.path(formatText("in/f%04d.segd", i)), bytes);
    return static_cast<double>(bytes.size()) * files;
  }

  void copy() {
    UnitStruct* const units = getDevPtr();
    FILE_SPEC file{};
    copyText(file.dir.path, folder.path("in"));
    copyText(file.name, "f0000.segd");
    openDiskUnit(&units[0], file, "rb");
    copyText(file.dir.path, folder.path("out"));
    copyText(file.name, "line.sgd");
    units[1].fs = file;
    units[1].type = UT_DISK;
    units[1].state = 1;
    if (doSegdCopy(units) != 0) {
      std::fprintf(stderr, "bench: the job failed\n");
      std::exit(1);
    }
  }

  TestFolder folder;
  TestToolkit toolkit;
};

}  // namespace

int main(int argc, char** argv) {
  const double megabytes = argc > 1 ? std::max(1, std::atoi(argv[1])) : 500;
  Bench bench;
  const auto copy = [&bench] { bench.copy(); };
  const auto cp = bench::syncedShell("cp in/* peer", "peer/* peer");
  const int fileMegabytes = TRACES_A_FILE * SAMPLES * 4 / 1000000;
  const int sets = std::clamp(static_cast<int>(megabytes / fileMegabytes), 1, 90);
  bench::compare("SEG D copy, one field file", bench.makeInputs(1, sets), copy, "cp", cp, 1.3);
  std::filesystem::remove_all("out");
  std::filesystem::remove_all("peer");
  std::filesystem::create_directory("out");
  std::filesystem::create_directory("peer");
  bench::compare("SEG D copy, many field files", bench.makeInputs(sets, 1), copy, "cp", cp, 1.3);
  return 0;
}
