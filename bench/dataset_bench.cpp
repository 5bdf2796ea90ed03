// Datasets beside cp: written and copied trace by trace, read from one end to the other and at random.
// Usage: dataset_bench [megabytes]
//
// Both sides of writing and copying end with the bytes on the disk, as those of a closed dataset are. Reading is from
// the page cache, beside a cp that leaves its bytes there.

#include <algorithm>
#include <random>

#include "bench/measure.h"
#include "libkyr/datasets.h"
#include "tests/support/test_files.h"

namespace {

constexpr int samples = 1500;
constexpr int tracesPerRecord = 240;

void must(bool holds) {
  if (holds) return;
  std::fprintf(stderr, "bench: a dataset call failed\n");
  std::exit(1);
}

class Output {
 public:
  Output(const char* path, int records) {
    SetNumberOfOutputs(record_.get(), 1);
    must(NewOutputSeismicFile(&link_, record_.get(), path, 0, kAnySeismicType, 0, tracesPerRecord) == kyrOk);
    SetDatasetProperty(record_.get(), link_, dsRecords, longIntType, gUnknownUnits, &records);
    SetDatasetProperty(record_.get(), link_, dsSamples, longIntType, gUnknownUnits, &samples);
    must(EndInit(record_.get()) == kyrOk);
  }
  void trace(int rec, int number, const float* data, const TraceInfo& header) {
    must(TracePut(record_.get(), link_, rec, number, data, &header) == kyrOk);
  }
  void close() { must(CloseFile(record_.get(), link_) == kyrOk); }

 private:
  ProcessRecordPtr record_{NewProcessRecord()};
  Link link_;
};

class Input {
 public:
  explicit Input(const char* path) {
    SetNumberOfInputs(record_.get(), 1);
    must(NewInputFile(&link_, record_.get(), path, 0, kAnySeismicType) == kyrOk);
  }
  void trace(int rec, int number) {
    must(TraceGet(record_.get(), link_, rec, number, trace_.data(), &header_) == kyrOk);
    must(trace_[0] == static_cast<float>(rec * tracesPerRecord + number));
  }
  void header(int rec, int number) { must(HeaderGet(record_.get(), link_, rec, number, &header_) == kyrOk); }
  const float* lastTrace() const { return trace_.data(); }
  const TraceInfo& lastHeader() const { return header_; }

 private:
  ProcessRecordPtr record_{NewProcessRecord()};
  Link link_;
  TraceInfo header_{};
  std::vector<float> trace_ = std::vector<float>(samples);
};

template <typename Work>
void everyTrace(int records, const Work& work) {
  for (int rec = 1; rec <= records; ++rec)
    for (int number = 1; number <= tracesPerRecord; ++number) work(rec, number);
}

void writeDataset(const char* path, int records) {
  Output output(path, records);
  std::vector<float> trace(samples, 1.5F);
  everyTrace(records, [&](int rec, int number) {
    trace[0] = static_cast<float>(rec * tracesPerRecord + number);
    output.trace(rec, number, trace.data(), TraceInfo{});
  });
  output.close();
}

void readDataset(const char* path, int records) {
  Input input(path);
  everyTrace(records, [&](int rec, int number) { input.trace(rec, number); });
}

void copyDataset(const char* from, const char* to, int records) {
  Input input(from);
  Output output(to, records);
  everyTrace(records, [&](int rec, int number) {
    input.trace(rec, number);
    output.trace(rec, number, input.lastTrace(), input.lastHeader());
  });
  output.close();
}

/// Prints how many of something one second holds.
void rate(const char* name, double count, const std::function<void()>& work) {
  std::vector<double> seconds;
  work();
  for (int run = 0; run < 5; ++run) seconds.push_back(bench::secondsOf(work));
  std::printf("%-44s %9.0f a second\n", name, count / bench::median(seconds));
}

}  // namespace

int main(int argc, char** argv) {
  const int megabytes = argc > 1 ? std::atoi(argv[1]) : 500;
  const TestFolder folder;
  const double slot = 824 + 4 * samples;
  const int records = std::max(1, static_cast<int>(megabytes * 1e6 / slot / tracesPerRecord));
  const double bytes = slot * tracesPerRecord * records;
  const auto toDisk = bench::shell("cp a.kyr b.kyr && sync b.kyr");
  writeDataset("a.kyr", records);
  bench::compare(
      "write a dataset", bytes, [&] { writeDataset("a.kyr", records); }, "cp", toDisk, 1.3);
  bench::compare(
      "copy a dataset", bytes, [&] { copyDataset("a.kyr", "c.kyr", records); }, "cp", toDisk, 1.3);
  const auto toCache = bench::shell("cp a.kyr b.kyr");
  bench::compare(
      "read a dataset", bytes, [&] { readDataset("a.kyr", records); }, "cp", toCache, 1.0);

  Input input("a.kyr");
  std::mt19937 random(1);
  constexpr int reads = 20000;
  rate(
      "traces at random", reads,
      [&] {
        for (int i = 0; i < reads; ++i)
          input.trace(static_cast<int>(random() % static_cast<unsigned>(records)) + 1,
                      static_cast<int>(random() % tracesPerRecord) + 1);
      });
  rate("headers in order", bytes / slot,
       [&] { everyTrace(records, [&](int rec, int number) { input.header(rec, number); }); });
  return 0;
}
