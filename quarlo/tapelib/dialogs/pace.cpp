#include "quarlo/tapelib/dialogs/pace.h"

#include <algorithm>
#include <cmath>

#include "libkyr/text.h"

namespace {

constexpr long kWindow = 10'000;  // what a rate is taken over
constexpr long kLeast = 2'000;    // what it is taken over at least
constexpr long kBetween = 500;    // between two samples
constexpr long kWaitsAfter = 5'000;
constexpr double kMinute = 60;

/// Three digits, or all that stand before the point.
std::string digits(double number) { return formatText("%.*f", number >= 99.95 ? 0 : number >= 9.995 ? 1 : 2, number); }

std::string bytesText(double bytes) {
  constexpr const char* kUnits[] = {"bytes", "kB", "MB", "GB", "TB", "PB"};
  std::size_t unit = 0;
  for (; bytes >= 999.5 && unit + 1 < std::size(kUnits); ++unit) bytes /= 1000;
  return (unit == 0 ? formatText("%.0f", bytes) : digits(bytes)) + " " + kUnits[unit];
}

std::string grouped(double number) {
  std::string text = formatText("%.0f", number);
  for (std::size_t at = text.size(); at > 3; at -= 3) text.insert(at - 3, 1, ',');
  return text;
}

}  // namespace

void Pace::take(const Sample& sample) {
  if (!recent_.empty()) {
    const Sample& last = recent_.back();
    const long passed = sample.time - last.time;
    if (passed < kBetween) return;
    // A longer while without a look was one step: a rewind, a drive that does not answer.
    if (sample.steps != last.steps) worked_ += std::min(passed, kWindow);
    still_ = sample.steps != last.steps ? 0 : still_ + passed;
    waiting_ = still_ >= kWaitsAfter;
    // Behind such a while or a wait, and where the counter begins anew, what was before tells nothing of what comes.
    if (waiting_ || passed > kWindow || sample.done < last.done) recent_.clear();
  }
  recent_.push_back(sample);
  while (recent_.size() > 2 && recent_[1].time + kWindow <= sample.time) recent_.pop_front();
  takeShare(std::clamp(sample.percent, int{kUnknown}, kWhole));
}

void Pace::takeShare(int percent) {
  // A share that goes back is another share.
  const int from = percent < percent_ ? 0 : std::max(0, percent_ + 1);
  for (int reached = from; reached <= percent; ++reached) workedAt_.at(static_cast<std::size_t>(reached)) = worked_;
  percent_ = percent;
}

std::optional<double> Pace::perSecond() const {
  if (recent_.empty() || recent_.back().time - recent_.front().time < kLeast) return std::nullopt;
  const double seconds = static_cast<double>(recent_.back().time - recent_.front().time) / 1000;
  return (recent_.back().done - recent_.front().done) / seconds;
}

std::optional<long> Pace::secondsLeft() const {
  if (percent_ <= 0 || percent_ >= kWhole || worked_ < kLeast) return std::nullopt;
  // The later half of what is done says more of what is left than the beginning.
  const auto percent = static_cast<std::size_t>(percent_);
  const std::size_t half = percent / 2;
  const double each = static_cast<double>(workedAt_[percent] - workedAt_[half]) / static_cast<double>(percent - half);
  const auto sinceThen = static_cast<double>(worked_ - workedAt_[percent]);
  const double left = std::max((kWhole - percent_) * each - sinceThen, (kWhole - percent_ - 1) * each);
  return std::lround(left / 1000);
}

std::string amountText(double amount, const char* unit) {
  return unit == nullptr ? bytesText(amount) : grouped(amount) + " " + unit;
}

std::string rateText(double perSecond, const char* unit) {
  if (unit == nullptr) return bytesText(perSecond) + "/s";
  if (perSecond > 0 && perSecond < 1) return digits(perSecond * kMinute) + "/min";
  return (perSecond < 10 ? digits(perSecond) : grouped(perSecond)) + "/s";
}

std::string durationText(long seconds) {
  return formatText("%ld:%02ld:%02ld", seconds / 3600, seconds / 60 % 60, seconds % 60);
}
