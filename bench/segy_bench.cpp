// The SEG Y copy beside cp and, where its library is installed, beside a plain loop of segyio calls; the sort of an
// index. Usage: segy_bench [megabytes]

#include <filesystem>
#include <fstream>
#include <random>

#include "bench/measure.h"
#include "libkyr/text.h"
#include "quarlo/segycopy/segycopy.h"
#include "quarlo/segycopy/segycopy_sort.h"
#include "quarlo/tapelib/dialogs/cons_win.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/frame/jobframe.h"
#include "tests/support/segy_files.h"
#include "tests/support/test_files.h"
#include "tests/support/test_toolkit.h"

namespace {

constexpr int SAMPLES = 1500;
constexpr int TRACES_A_FILE = 240;  // traces of one field file

/// The loop that a user of the library would write: read a trace, write a trace.
constexpr const char* SEGYIO_LOOP = R"(
#include <segyio/segy.h>
#include <stdlib.h>
int main(int argc, char** argv) {
  (void)argc;
  const int samples = atoi(argv[3]), traces = atoi(argv[4]), bytes = samples * 4;
  segy_file* in = segy_open(argv[1], "rb");
  segy_file* out = segy_open(argv[2], "w+b");
  char text[3201], binary[400], header[240];
  char* data = malloc(bytes);
  if (!in || !out || segy_read_textheader(in, text) || segy_binheader(in, binary)) return 1;
  segy_write_textheader(out, 0, text);
  segy_write_binheader(out, binary);
  for (int i = 0; i < traces; ++i)
    if (segy_traceheader(in, i, header, 3600, bytes) || segy_readtrace(in, i, data, 3600, bytes) ||
        segy_write_traceheader(out, i, header, 3600, bytes) || segy_writetrace(out, i, data, 3600, bytes))
      return 1;
  free(data);
  segy_close(in);
  return segy_close(out);
}
)";

class Bench {
 public:
  Bench() {
    toolkit.openTaskWindow([](WINDOW, EVENT*) -> long { return 0; });
    initIO(getDevPtr());
    consInit();
  }
  ~Bench() {
    unInitIO(getDevPtr());
    killConsole();
  }
  Bench(const Bench&) = delete;
  Bench& operator=(const Bench&) = delete;

  /// Field files of TRACES_A_FILE traces each, the files in random order.
  void makeInput(int traces) {
    std::vector<int> files(static_cast<std::size_t>((traces + TRACES_A_FILE - 1) / TRACES_A_FILE));
    for (std::size_t i = 0; i < files.size(); ++i) files[i] = static_cast<int>(i) + 1;
    std::shuffle(files.begin(), files.end(), std::mt19937(1));
    std::ofstream file(folder.path("in.sgy"), std::ios::binary);
    file << segyText() << segyBinary(SAMPLES);
    for (int i = 0; i < traces; ++i) {
      const int fieldFile = files[static_cast<std::size_t>(i / TRACES_A_FILE)];
      file << segyTrace({fieldFile, TRACES_A_FILE - i % TRACES_A_FILE, i, 0}, SAMPLES, i);
    }
    std::ofstream list(folder.path("list.txt"));
    for (int i = 0; i < traces; i += 2) list << i << "\n";
    std::ofstream(folder.path("all.txt")) << "0 - " << traces << "\n";
  }

  void copy() {
    UnitStruct* units = getDevPtr();
    FILE_SPEC file{};
    copyText(file.dir.path, folder.path(""));
    copyText(file.name, "in.sgy");
    openDiskUnit(&units[0], file, "rb");
    copyText(file.name, "out.sgy");
    openDiskUnit(&units[1], file, "w+b");
    const int result = doSegyCopy(units);
    closeDiskUnit(&units[0]);
    if (closeDiskUnit(&units[1]) != 0 || result != JOB_OK) {
      std::fprintf(stderr, "bench: the job failed\n");
      std::exit(1);
    }
  }
  void limitBy(const char* list) {
    segyInit();
    SgyParams.rangeLimit = true;
    SgyParams.limitType = LT_LIST;
    copyText(SgyParams.listParams.dir, folder.path(""));
    copyText(SgyParams.listParams.file, list);
  }

  TestFolder folder;
  TestToolkit toolkit;
};

void measureJobs(Bench& bench, int traces) {
  const double bytes = 3600.0 + traces * (240.0 + 4.0 * SAMPLES);
  bench.makeInput(traces);
  const auto copy = [&bench] { bench.copy(); };
  const auto cp = bench::syncedShell("cp " + bench.folder.path("in.sgy") + " " + bench.folder.path("peer.sgy"),
                                     bench.folder.path("peer.sgy"));
  segyInit();
  bench::compare("SEG Y copy", bytes, copy, "cp", cp, 1.6);
  bench.limitBy("all.txt");
  bench::compare("SEG Y copy with a range limit", bytes, copy, "cp", cp, 1.6);
  if (std::filesystem::exists("/usr/include/segyio/segy.h")) {
    writeFile(bench.folder.path("loop.c"), SEGYIO_LOOP);
    bench::shell("cc -O2 -o " + bench.folder.path("loop") + " " + bench.folder.path("loop.c") + " -lsegyio")();
    bench::compare("the same", bytes, copy, "loop",
                   bench::syncedShell(formatText("%s %s %s %d %d", bench.folder.path("loop").c_str(),
                                                 bench.folder.path("in.sgy").c_str(),
                                                 bench.folder.path("peer.sgy").c_str(), SAMPLES, traces),
                                      bench.folder.path("peer.sgy")),
                   0.5);
  }
  bench.limitBy("list.txt");
  bench::compare("SEG Y copy keeping half", bytes, copy, "cp", cp, 1.0);
  segyInit();
  SgyParams.sort = true;
  bench::compare("SEG Y sort by two keys", bytes, copy, "cp", cp, 1.8);
}

/// @param files, traces ranges of the two keys; 0 files: every trace of TRACES_A_FILE a file once, in random order
void measureIndex(const char* name, std::uint32_t files, std::uint32_t traces) {
  constexpr int COUNT = 1000000;
  std::mt19937 random(1);
  std::vector<SortItem> unsorted;
  for (int i = 0; i < COUNT; ++i) {
    const bool every = files == 0;
    const int file = every ? i / TRACES_A_FILE : static_cast<int>(random() % files);
    const int trace = every ? i % TRACES_A_FILE : static_cast<int>(random() % traces);
    unsorted.push_back({static_cast<double>(file), static_cast<double>(trace), 0, i * 6240.0, 6240});
  }
  std::shuffle(unsorted.begin(), unsorted.end(), random);
  std::vector<double> seconds;
  for (int run = 0; run < 5; ++run) {
    std::vector<SortItem> items = unsorted;
    seconds.push_back(
        bench::secondsOf([&] { segySort(reinterpret_cast<char*>(items.data()), COUNT, sizeof(SortItem)); }));
  }
  std::printf("%-44s %7.0f ms (goal 200 ms)\n", name, bench::median(seconds) * 1000);
}

}  // namespace

int main(int argc, char** argv) {
  const int megabytes = argc > 1 ? std::max(1, std::atoi(argv[1])) : 500;
  Bench bench;
  measureJobs(bench, static_cast<int>(megabytes * 1e6 / (240 + 4 * SAMPLES)));
  measureIndex("1 million index records, equal keys among them", 2000, 500);
  measureIndex("1 million index records, a few of them equal", 2000000, 100000);
  measureIndex("1 million index records, none of them equal", 0, 0);
  return 0;
}
