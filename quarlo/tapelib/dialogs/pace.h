/// How fast a job is and how long it will take, from what its counters show some times a second.
#pragma once

#include <array>
#include <deque>
#include <optional>
#include <string>

/// Fed with the counters as they are at some moment; answers for that moment. Times are milliseconds since the job's
/// start. What a job waits for (the next tape, an answer) is no part of its speed.
class Pace {
 public:
  /// What is known of a job at one moment.
  struct Sample {
    long time = 0;
    double done = 0;         ///< what the job counts: bytes, traces
    long steps = 0;          ///< grows with everything the job does; while it stands still, the job waits
    int percent = kUnknown;  ///< the share that is done
  };
  static constexpr int kUnknown = -1;

  /// @param sample not older than the one before; one that follows too soon is passed over
  void take(const Sample& sample);

  /// Things done in a second, over the last seconds; nothing while that would be a guess.
  std::optional<double> perSecond() const;
  /// Nothing has been done for some seconds.
  bool isWaiting() const { return waiting_; }
  /// Whole seconds to the end; nothing while that is not known, or when all of the share is done and the job still goes
  /// on.
  std::optional<long> secondsLeft() const;

 private:
  static constexpr int kWhole = 100;
  void takeShare(int percent);

  std::deque<Sample> recent_;  ///< the last seconds, and the last before them
  long worked_ = 0;            ///< milliseconds in which the job did something
  int percent_ = kUnknown;
  std::array<long, kWhole + 1> workedAt_{};  ///< when each percent was reached, by worked_
  long still_ = 0;                           ///< milliseconds without a step
  bool waiting_ = false;
};

/// "12.3 GB", "1,234,567 traces". @param unit null for bytes
std::string amountText(double amount, const char* unit);
/// "103 MB/s", of other things "1,234/s"; what is slower than one a second in a minute: "12.0/min".
std::string rateText(double perSecond, const char* unit);
/// "0:01:23": hours, minutes, seconds.
std::string durationText(long seconds);
