#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <utility>

#include "quarlo/tapelib/driver/driver.h"
#include "quarlo/tapelib/driver/fault_driver.h"
#include "quarlo/tapelib/driver/st_driver.h"
#include "quarlo/tapelib/driver/virtual_driver.h"
#include "xvt/xvt.h"

namespace {

std::unique_ptr<TapeDriver>& slot() {
  static std::unique_ptr<TapeDriver> driver;
  return driver;
}

void (*driveNews)(const char* line) = nullptr;

std::unique_ptr<TapeDriver> plainDriver() {
  const char* folder = std::getenv("QUARLO_VIRTUAL_DRIVES");
  if (folder == nullptr || *folder == '\0') return std::make_unique<StDriver>();
  // The program may have gone elsewhere since.
  DIRECTORY startup{};
  xvt_fsys_get_dir_startup(&startup);
  return std::make_unique<VirtualDriver>(std::filesystem::path(startup.path) / folder);
}

std::unique_ptr<TapeDriver> chosenDriver() {
  std::unique_ptr<TapeDriver> driver = plainDriver();
  const char* plan = std::getenv("QUARLO_TAPE_FAULT");
  if (plan == nullptr || *plan == '\0') return driver;
  std::vector<TapeFault> faults;
  std::string bad;
  if (!parseTapeFaults(plan, faults, bad))
    std::fprintf(stderr, "QUARLO_TAPE_FAULT: \"%s\" is no fault (KIND:N:WHAT); it and what follows are ignored\n",
                 bad.c_str());
  return std::make_unique<FaultDriver>(std::move(driver), std::move(faults));
}

}  // namespace

void tellOfDrive(const std::string& line) {
  if (driveNews != nullptr)
    driveNews(line.c_str());
  else
    std::fprintf(stderr, "%s\n", line.c_str());
}

void setDriveNews(void (*tell)(const char* line)) { driveNews = tell; }

TapeDriver& tapeDriver() {
  if (!slot()) slot() = chosenDriver();
  return *slot();
}

std::unique_ptr<TapeDriver> setTapeDriver(std::unique_ptr<TapeDriver> driver) {
  return std::exchange(slot(), std::move(driver));
}
