// How long the index of a SEG Y sort takes: 1 million records, goal 150 ms.
#include <random>

#include "bench/measure.h"
#include "quarlo/segycopy/segycopy_sort.h"

namespace {

constexpr int kCount = 1000000;
constexpr int kTracesAFile = 240;

/// @param files, traces ranges of the two keys; 0 files: every trace of kTracesAFile a file once, in random order
void measure(const char* name, std::uint32_t files, std::uint32_t traces) {
  std::mt19937 random(1);
  std::vector<SortItem> unsorted;
  for (int i = 0; i < kCount; ++i) {
    const bool every = files == 0;
    const int file = every ? i / kTracesAFile : static_cast<int>(random() % files);
    const int trace = every ? i % kTracesAFile : static_cast<int>(random() % traces);
    unsorted.push_back({static_cast<double>(file), static_cast<double>(trace), 0, i * 6240.0, 6240});
  }
  std::shuffle(unsorted.begin(), unsorted.end(), random);
  std::vector<double> seconds;
  for (int run = 0; run < 7; ++run) {
    std::vector<SortItem> items = unsorted;
    seconds.push_back(
        bench::secondsOf([&] { segySort(reinterpret_cast<char*>(items.data()), kCount, sizeof(SortItem)); }));
  }
  std::printf("%-44s %7.0f ms (goal 150 ms)\n", name, bench::median(seconds) * 1000);
}

}  // namespace

int main() {
  measure("1 million index records, equal keys among them", 2000, 500);
  measure("1 million index records, a few of them equal", 2000000, 100000);
  measure("1 million index records, none of them equal", 0, 0);
  return 0;
}
