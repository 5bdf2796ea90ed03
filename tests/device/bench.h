/// Drives to hold the device layer against: a virtual one always, and the genuine one that QUARLO_TAPE_DEVICE names
/// (such as /dev/nst0), WHOSE CARTRIDGE IS OVERWRITTEN. QUARLO_TAPE_HANDS names a program that does with the genuine
/// drive what an operator would; without it those cases are skipped:
///
///   newtape NAME MB   a blank cartridge of so many megabytes up to early warning
///   eject             takes the cartridge out
///   insert NAME       puts one in (the drive is empty)
///   badblock NAME N   makes logical block N (filemarks counted) unreadable
///   protect 0|1       sets the write-protect tab; takes hold at the next insert
///   reset             resets the drive
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "quarlo/tapelib/driver/drive_file.h"
#include "quarlo/tapelib/driver/st_driver.h"
#include "quarlo/tapelib/driver/virtual_driver.h"
#include "tests/support/test_files.h"

class Bench {
 public:
  Bench() = default;
  Bench(const Bench&) = delete;
  Bench& operator=(const Bench&) = delete;
  virtual ~Bench() { setTapeDriver(nullptr); }
  virtual std::string device() const = 0;
  virtual bool hasHands() const = 0;
  virtual void hands(const std::string& command) = 0;
  /// A blank cartridge in the drive, which stands at its beginning.
  void freshTape(const std::string& name, int megabytes = 200) {
    if (!hasHands()) return;
    hands("newtape " + name + " " + std::to_string(megabytes));
    hands("eject");
    hands("insert " + name);
  }
};

class GenuineBench : public Bench {
 public:
  GenuineBench() : hands_(std::getenv("QUARLO_TAPE_HANDS")) { setTapeDriver(std::make_unique<StDriver>()); }
  std::string device() const override { return std::getenv("QUARLO_TAPE_DEVICE"); }
  bool hasHands() const override { return hands_ != nullptr; }
  void hands(const std::string& command) override {
    ASSERT_EQ(std::system((std::string(hands_) + " " + command).c_str()), 0) << command;
  }

 private:
  const char* hands_;
};

class VirtualBench : public Bench {
 public:
  VirtualBench() {
    drive_.model = "TAPE-1";
    drive_.lun = 1;
    other_.model = "TAPE-2";
    other_.host = 1;
    store();
    writeDriveFile(folder_.path("2.drive"), other_);
    VirtualDrive::lookEvery(std::chrono::milliseconds(0));
    auto driver = std::make_unique<VirtualDriver>(folder());
    driver_ = driver.get();
    setTapeDriver(std::move(driver));
    if (driver_->drive(0) == nullptr) std::abort();
    freshTape("T1");
  }
  ~VirtualBench() override { setTapeDriver(nullptr); }
  std::string device() const override { return "/dev/nst0"; }
  bool hasHands() const override { return true; }
  void hands(const std::string& command) override {
    std::istringstream words(command);
    std::string verb;
    std::string name;
    long number = 0;
    words >> verb;
    if (verb == "reset") return driver_->drive(0)->reset();
    if (verb == "protect")
      words >> number;
    else
      words >> name >> number;
    if (verb == "newtape") {
      writeFile(path(name), "");
      capacity_[name] = number * 1048576LL;
    } else if (verb == "badblock") {
      drive_.badBlocks.push_back(number);
    } else if (verb == "protect") {
      drive_.writeProtect = number != 0;
      return;  // seen when a cartridge goes in
    } else {
      drive_.cartridge = verb == "insert" ? path(name) : "";
      drive_.capacity = verb == "insert" ? capacity_[name] : 0;
      if (verb == "insert") drive_.badBlocks.clear();
    }
    store();
  }
  std::string path(const std::string& cartridge) const { return folder_.path(cartridge + ".tap"); }
  std::string folder() const { return folder_.path(""); }
  DriveDescription& description() { return drive_; }
  void store() { ASSERT_EQ(writeDriveFile(folder_.path("1.drive"), drive_), 0); }

 private:
  TestFolder folder_;
  DriveDescription drive_;
  DriveDescription other_;
  std::map<std::string, long long> capacity_;
  VirtualDriver* driver_ = nullptr;
};

inline std::unique_ptr<Bench> makeBench(const std::string& kind) {
  if (kind == "genuine") return std::make_unique<GenuineBench>();
  return std::make_unique<VirtualBench>();
}

/// The benches of this run.
inline std::vector<std::string> benches() {
  std::vector<std::string> kinds{"virtual"};
  if (std::getenv("QUARLO_TAPE_DEVICE") != nullptr) kinds.emplace_back("genuine");
  return kinds;
}

inline std::string benchName(const testing::TestParamInfo<std::string>& info) { return info.param; }

#define NEEDS_HANDS() \
  if (!bench_->hasHands()) GTEST_SKIP() << "QUARLO_TAPE_HANDS names no operator"
