#include "quarlo/index/scansummary.h"

#include <string>

#include "libkyr/nullvalue.h"
#include "libkyr/text.h"
#include "quarlo/index/indexfile.h"
#include "quarlo/tapelib/console.h"

void NumberRuns::add(int number) {
  const std::int64_t value = number;
  auto next = runs_.upper_bound(value);
  auto run = next;
  if (next != runs_.begin() && (--run)->second >= value - 1) {
    if (run->second >= value) return;
    run->second = value;
  } else {
    run = runs_.emplace_hint(next, value, value);
  }
  if (next == runs_.end() || next->first != value + 1) return;
  run->second = next->second;
  runs_.erase(next);
}

void ScanSummary::take(const TraceInfo& header) {
  if (header.words[trKillFlag] == killNeverWritten) return;
  ++(IsDead(header) ? dead_ : live_);
  const auto fieldFile = static_cast<std::int32_t>(header.words[trFieldFile]);
  if (!IsDead(header) && !IsValueNull(fieldFile)) fieldFiles_.add(fieldFile);
}

void ScanSummary::tell(int records, std::int64_t places) const {
  const long long live = live_;
  const long long dead = dead_;
  const long long unwritten = places - live_ - dead_;
  console_printf("%d record%s, %lld trace%s: %lld live, %lld dead.", records, plural(records), live + dead,
                 plural(live + dead), live, dead);
  if (unwritten > 0) console_printf("%lld place%s without a trace.", unwritten, plural(unwritten));
  if (live_ == 0) return;
  tellFieldFiles();
  tellRanges();
}

void ScanSummary::tellFieldFiles() const {
  constexpr int kNamed = 10;
  const auto& runs = fieldFiles_.runs();
  if (runs.empty()) return;
  std::string holes;
  std::int64_t missing = 0;
  int named = 0;
  for (auto run = runs.begin(), next = std::next(run); next != runs.end(); run = next++) {
    const long long first = run->second + 1;
    const long long last = next->first - 1;
    missing += last - first + 1;
    if (++named > kNamed) continue;
    holes += named > 1 ? ", " : "";
    holes += first == last ? formatText("%lld", first) : formatText("%lld to %lld", first, last);
  }
  console_printf("Field files from %lld to %lld.", static_cast<long long>(runs.begin()->first),
                 static_cast<long long>(runs.rbegin()->second));
  if (missing > 0)
    console_printf("  ** %lld field file number%s between them %s missing: %s%s.", static_cast<long long>(missing),
                   plural(missing), missing == 1 ? "is" : "are", holes.c_str(), named > kNamed ? " ..." : "");
}
