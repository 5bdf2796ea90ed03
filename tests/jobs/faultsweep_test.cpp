// Every operation of a small image copy made to fail once, the first, the second, the third ... until none is left:
// each run ends, its log is true, its units are closed. A transient fault may cost the job, never a block in silence.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>

#include "tests/jobs/job_fixture.h"

namespace {

const Tape SOURCE = {block(100, 1), block(7, 2), MARK, block(3000, 3), block(11, 4), MARK, MARK};
const Tape COPY = {block(100, 1), block(7, 2), MARK, block(3000, 3), block(11, 4), MARK, MARK, MARK};

class FaultSweep : public JobTest, public testing::WithParamInterface<const char*> {
 protected:
  void planFault(long operation) {
    setenv("QUARLO_TAPE_FAULT", ("any:" + std::to_string(operation) + ":" + GetParam()).c_str(), 1);
    setTapeDriver(nullptr);
  }
  void TearDown() override { unsetenv("QUARLO_TAPE_FAULT"); }

  /// Chooses a drive in a selection dialog if the fault left it there.
  void choose(int control, int resource, const std::string& name) {
    toolkit.onModal(resource, [this, name](WINDOW drives) {
      const auto rows = toolkit.rows(drives, DRV_LIST);
      for (std::size_t row = 0; row < rows.size(); ++row) {
        if (rows[row].find(name) != std::string::npos) {
          toolkit.select(drives, DRV_LIST, static_cast<int>(row));
          toolkit.press(drives, DRV_OK);
          return;
        }
      }
      toolkit.close(drives);
    });
    toolkit.press(dialog, control);
    toolkit.modals.erase(resource);
  }

  void copyOnce(bool toTape) {
    makeCartridge("in.tap", SOURCE);
    makeCartridge("out.tap", {});
    load(0, "in.tap");
    load(1, "out.tap");
    openCopyDialog();
    choose(CP_INPUT_TAPE, DLG_INPUT_DRIVE, "drive0");
    if (toTape) {
      choose(CP_OUTPUT_TAPE, DLG_OUTPUT_DRIVE, "drive1");
    } else {
      chooseOutputFile(folder.path("out.tpf"));
    }
    if (status() == "Ready") {
      noFurtherTape();
      start();
      toolkit.modals.clear();
    }
  }

  long claimedBlocks() {
    for (const std::string& line : consoleWithoutDates()) {
      int blocks = 0;
      char ending[16] = "";
      if (std::sscanf(line.c_str(), "   %d block%15s copied.", &blocks, ending) >= 1) {
        return blocks;
      }
    }
    return -1;
  }

  /// A log that says what was done: of a finished copy, that it is whole; of every copy, how many blocks it has.
  void expectTruth(bool toTape) {
    if (!consoleHas("Copy started at DATE.")) {
      return;
    }
    EXPECT_TRUE(consoleHas("Copy ended at DATE."));
    EXPECT_TRUE(status() == "Complete" || status() == "Failed") << status();
    const Tape out = toTape ? tapeIn("out.tap") : Tape{};
    if (toTape) {
      EXPECT_EQ(claimedBlocks(),
                std::count_if(out.begin(), out.end(), [](const std::string& b) { return !b.empty(); }));
    }
    if (status() == "Complete" && count("Retries failed. Skipping block.") == 0) {
      EXPECT_TRUE(toTape ? out == COPY : readFile(folder.path("out.tpf")) == tpfImage(COPY));
    }
  }

  void expectClosed() {
    for (int unit = 0; unit <= DRIVES; ++unit) {
      EXPECT_EQ(units[unit].state, 0);
      EXPECT_EQ(units[unit].fd, 0);
      EXPECT_EQ(units[unit].fp, nullptr);
    }
  }

  void sweep(bool toTape) {
    long inARow = 0;
    for (long operation = 1; operation < 2000; ++operation) {
      SCOPED_TRACE("operation " + std::to_string(operation));
      planFault(operation);
      forgetConsole();
      toolkit.errors.clear();
      toolkit.failures.clear();
      copyOnce(toTape);
      expectTruth(toTape);
      const bool clean = toolkit.errors.empty() && status() != "Failed" && !sawTrouble();
      closeCopyDialog();
      expectClosed();
      inARow = clean ? inARow + 1 : 0;
      if (inARow > 8) {
        return;  // the fault lies behind the last operation
      }
      if (HasFailure()) {
        showConsole();
        return;
      }
    }
    FAIL() << "the sweep found no end";
  }

  void showConsole() {
    for (const std::string& line : consoleWithoutDates()) {
      std::printf("  %s\n", line.c_str());
    }
    for (const std::string& box : toolkit.errors) {
      std::printf("  box: %s\n", box.c_str());
    }
  }

  bool sawTrouble() {
    const auto lines = consoleWithoutDates();
    return std::any_of(lines.begin(), lines.end(), [](const std::string& line) { return line.find("***") == 2; });
  }
};

TEST_P(FaultSweep, TapeToTape) { sweep(true); }
TEST_P(FaultSweep, TapeToDisk) { sweep(false); }

INSTANTIATE_TEST_SUITE_P(Errors, FaultSweep, testing::Values("EIO", "ENOSPC", "short"));

}  // namespace
