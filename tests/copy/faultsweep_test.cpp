// Every operation of a small image copy made to fail once, the first, the second, the third ... until none is left:
// each run ends, its log is true, its units are closed. A transient fault may cost the job, never a block in silence.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>

#include "tests/support/job_fixture.h"

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

/// The disk that fills up at any byte of the output: what stands in the file afterwards can be read to its end and is
/// what the log claims.
class DiskFullSweep : public JobTest {
 protected:
  void copyWithRoomFor(rlim_t bytes) {
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    rlimit room = before;
    room.rlim_cur = bytes;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &room), 0);
    start();
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
  }

  /// Data bytes of a tape-image file that holds whole items only; -1 when it does not.
  static double wholeBytes(const std::string& image) {
    double bytes = 0;
    std::size_t place = 32;
    while (place + 32 <= image.size()) {
      const bool mark = wordAt(image, place + 28) == 0xF0F0F0F0U;
      const std::size_t length = mark ? 0 : wordAt(image, place);
      bytes += static_cast<double>(length);
      place += 32 + length;
    }
    return place == image.size() ? bytes : -1;
  }
};

TEST_F(DiskFullSweep, EveryLengthLeavesAReadableFileAndATrueLog) {
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  Tape tape;
  for (unsigned i = 0; i < 12; ++i) {
    tape.push_back(block(i % 4 == 3 ? 40000 : 3000, i));
    if (i % 5 == 4) {
      tape.push_back(MARK);
    }
  }
  tape.insert(tape.end(), {MARK, MARK, MARK});
  writeFile("in.tpf", tpfImage(tape));
  unInitIO(units);
  setenv("ST_BUFFER", "64", 1);
  initIO(units);
  unsetenv("ST_BUFFER");
  openCopyDialog();
  const rlim_t whole = tpfImage(tape).size();
  for (rlim_t room = 20000; room < whole; room += 997) {
    SCOPED_TRACE("room for " + std::to_string(room));
    chooseInputFile(folder.path("in.tpf"));
    chooseOutputFile(folder.path("out.tpf"));
    copyWithRoomFor(room);
    const double kept = wholeBytes(readFile("out.tpf"));
    ASSERT_GE(kept, 0);
    ASSERT_EQ(status(), room + 64 < whole ? "Failed" : status());
    ASSERT_EQ(count(std::to_string(static_cast<long>(kept)) + " bytes copied."), 1);
    ASSERT_EQ(units[1].fp, nullptr);
  }
  std::signal(SIGXFSZ, handler);
}

INSTANTIATE_TEST_SUITE_P(Errors, FaultSweep, testing::Values("EIO", "ENOSPC", "short"));

}  // namespace
