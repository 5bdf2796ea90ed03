// Small copies of every kind, and at every place in them what can come there: an operation of a drive that fails, the
// user who stops or closes the dialog, memory that is wanting, a full disk. Each run ends, its log is true of what the
// output holds, its units are closed. A transient fault may cost the job, never a block in silence.

#include <numeric>

#include "quarlo/tapelib/jobstate.h"
#include "tests/segdcopy/segd_fixture.h"
#include "tests/support/segy_files.h"

namespace {

struct Job {
  const char* name;
  const char* format;
  bool fromTape;
  bool toDisk;
  const char* bytesTold;  // how the log's line of the bytes ends, and that of the blocks where it has one
  const char* blocksTold = nullptr;
  std::ptrdiff_t headers = 0;  // blocks that these lines do not count
};

bool isImage(const Job& job) { return std::string(job.format) == "UNFORMATTED"; }
bool isSegd(const Job& job) { return std::string(job.format) == "SEG D"; }

/// What the input of a job holds; traces and blocks grow with `samples`.
Tape tapeOf(const Job& job, int samples) {
  const auto length = static_cast<std::size_t>(samples);
  if (isImage(job))
    return {block(length, 1), block(7, 2), MARK, block(4 * length, 3), block(11, 4), block(length, 5), MARK, MARK};
  if (!isSegd(job))
    return {segyText(), segyBinary(samples), segyTrace({}, samples, 1), segyTrace({}, samples, 2), MARK, MARK};
  FieldFile one;
  one.milliseconds = 2 * samples;
  FieldFile two = one;
  two.number = two.seed = 2;
  return one.tape() + two.tape() + Tape{MARK};
}

Tape blocksOf(Tape tape) {
  std::erase(tape, MARK);
  return tape;
}

class JobSweep : public SegdTest, public testing::WithParamInterface<Job> {
 protected:
  ~JobSweep() override { unsetenv("QUARLO_TAPE_FAULT"); }

  void prepare(int samples = 10) {
    const Tape tape = tapeOf(job, samples);
    whole = isImage(job) ? tape + Tape{MARK} : tape;
    if (job.toDisk && !isImage(job)) whole = blocksOf(whole);
    makeCartridge("in.tap", tape);
    writeFile("in/a.segd", joined({tape.begin(), std::find(tape.begin(), tape.end(), MARK)}));
    if (isSegd(job)) writeFile("in/b.segd", joined({std::find(tape.begin(), tape.end(), MARK) + 1, tape.end()}));
    if (!isSegd(job)) writeFile("in/a.segd", isImage(job) ? tpfImage(whole) : joined(tape));
  }
  /// Chooses a drive if the dialog comes and shows it.
  void chooseDrive(int control, int resource, const std::string& name) {
    toolkit.onModal(resource, [this, name](WINDOW drives) {
      const Lines rows = toolkit.rows(drives, DRV_LIST);
      const auto row = std::find_if(rows.begin(), rows.end(), [&](auto& each) { return each.find(name) != each.npos; });
      if (row == rows.end()) return toolkit.close(drives);
      toolkit.select(drives, DRV_LIST, *row);
      toolkit.press(drives, DRV_OK);
    });
    toolkit.press(dialog, control);
    toolkit.modals.erase(resource);
  }
  /// One run of the job on new outputs, as far as it comes.
  void copyOnce() {
    makeCartridge("out.tap", {});
    load(0, "in.tap");
    load(1, "out.tap");
    std::filesystem::remove_all("out");
    std::filesystem::create_directory("out");
    toolkit.errors.clear();
    toolkit.failures.clear();
    said.clear();
    if (!xvt_vobj_is_valid(dialog)) openCopyDialog();
    toolkit.select(dialog, CP_FORMAT, job.format);
    if (job.fromTape) chooseDrive(CP_INPUT_TAPE, DLG_INPUT_DRIVE, "drive0");
    if (!job.fromTape) chooseInputFile(folder.path("in/a.segd"));
    if (!job.toDisk) chooseDrive(CP_OUTPUT_TAPE, DLG_OUTPUT_DRIVE, "drive1");
    if (job.toDisk) chooseOutputFile(folder.path(isSegd(job) ? "out" : "out/a.tpf"));
    if (status() != "Ready") return;
    if (job.fromTape) noFurtherTape();
    toolkit.pumps = 0;
    start();
    toolkit.modals.clear();
    said = consoleWithoutDates();
    expectTruth();
  }

  /// The items on the output; one that is not whole is none of the input's.
  Tape held() {
    if (!job.toDisk) return tapeIn("out.tap");
    std::string bytes;
    for (const std::string& name : outNames()) bytes += out(name);
    if (isImage(job)) return tpfTape(bytes);
    Tape items;
    for (std::size_t place = 0; place < bytes.size(); place += items.back().size())
      items.push_back(bytes.substr(place, items.size() < whole.size() ? whole[items.size()].size() : bytes.npos));
    return items;
  }
  /// The number that the log tells of something, -1 where no line has it.
  long told(const std::string& what) {
    for (const std::string& line : said)
      if (line.find(what) != line.npos && line.ends_with('.')) return std::atol(line.c_str());
    return -1;
  }
  void expectTruth() {
    const Tape now = held();
    const Tape blocks = blocksOf(now);
    const Tape all = blocksOf(whole);
    ASSERT_LE(blocks.size(), all.size());
    EXPECT_EQ(shortly(blocks), shortly(Tape(all.begin(), all.begin() + std::ssize(blocks))));
    const Tape counted(blocks.begin() + std::min(std::ssize(blocks), job.headers), blocks.end());
    EXPECT_EQ(told(job.bytesTold), std::ssize(joined(counted)));
    EXPECT_TRUE(job.blocksTold == nullptr || told(job.blocksTold) == std::ssize(counted))
        << counted.size() << " blocks";
    EXPECT_TRUE(!isSegd(job) || told(" field file") <= std::ssize(counted) / 3);
    EXPECT_TRUE(says("Copy ended at DATE.") || says(std::string(job.format) + " copy ended at DATE."));
    // A tape, or its image, that the job leaves of its own accord ends with two marks.
    const bool closed = now.size() > 1 && now.back() == MARK && now[now.size() - 2] == MARK;
    EXPECT_TRUE(failed() || blocks.empty() || closed || (job.toDisk && !isImage(job)));
    EXPECT_TRUE(failed() || stopped() || now == whole);
    // A tape that cannot be closed behind the summary fails the run as well, in a line of its own.
    EXPECT_TRUE(!xvt_vobj_is_valid(dialog) || (status() == "Complete" && !failed()) ||
                (status() == "Failed" && saysError()))
        << status();
    for (int unit = 0; unit <= DRIVES; ++unit) {
      EXPECT_EQ(units[unit].state, 0);
      EXPECT_EQ(units[unit].fd, 0);
      EXPECT_EQ(units[unit].fp, nullptr);
    }
    EXPECT_FALSE(jobIsRunning() || toolkit.hasTimers());
    EXPECT_EQ(toolkit.dialog(DLG_PROGRESS), NULL_WIN);
  }
  bool says(const std::string& line) { return std::ranges::find(said, line) != said.end(); }
  bool failed() { return says("  *** Job Failed."); }
  bool stopped() { return says("  *** Copy aborted by user at DATE."); }
  bool saysError() {
    return std::ranges::any_of(said, [](auto& line) { return line.starts_with("  *** "); });
  }
  bool clean() { return status() == "Complete" && toolkit.errors.empty() && !saysError(); }
  void showConsole() {
    for (const std::string& line : said) std::printf("  %s\n", line.c_str());
    for (const std::string& box : toolkit.errors) std::printf("  box: %s\n", box.c_str());
  }

  const Job& job = GetParam();
  Lines said;  // by the run, dates replaced by DATE
  Tape whole;  // what the output of a whole copy holds
};

class DriveSweep : public JobSweep {};
class DiskSweep : public JobSweep {};

TEST_P(DriveSweep, WhateverOperationOfADriveFails) {
  prepare();
  for (const std::string error : {"EIO", "ENOSPC", "short"}) {
    int cleanInARow = 0;
    bool retried = false;
    // Opening the drives alone has thirty operations in a row whose failure harms nobody.
    for (int operation = 1; cleanInARow < 40; ++operation) {
      SCOPED_TRACE(error + " at " + std::to_string(operation));
      ASSERT_LT(operation, 500) << "the sweep found no end";
      setenv("QUARLO_TAPE_FAULT", ("any:" + std::to_string(operation) + ":" + error).c_str(), 1);
      setTapeDriver(nullptr);
      copyOnce();
      retried = retried || std::ranges::any_of(said, [](auto& line) { return line.find("retrying") != line.npos; });
      cleanInARow = clean() ? cleanInARow + 1 : 0;
      if (HasFailure()) return showConsole();
      closeCopyDialog();
    }
    EXPECT_TRUE(retried || error == "short") << error << " never came to a read";
  }
}

TEST_P(JobSweep, WhereverItIsStoppedOrClosedOrMemoryIsWanting) {
  const std::pair<std::string, std::function<void()>> events[] = {
      {"stop", [this] { toolkit.press(toolkit.dialog(DLG_PROGRESS), PROG_STOP); }},
      {"close", [this] { toolkit.close(dialog); }},
      {"no memory", [] { throw std::bad_alloc(); }},
  };
  prepare();
  for (const auto& [name, event] : events) {
    bool came = true;
    for (long at = 1; came; ++at) {
      SCOPED_TRACE(name + " at " + std::to_string(at));
      came = false;
      toolkit.onPump = [&, at](long pumps) {
        if (pumps != at || came) return;
        came = true;
        event();
        EXPECT_TRUE(xvt_vobj_is_valid(dialog)) << "the dialog waits for the job";
      };
      copyOnce();
      toolkit.onPump = nullptr;
      const bool noMemory = came && name == "no memory";
      EXPECT_EQ(xvt_vobj_is_valid(dialog), !came || name != "close");
      EXPECT_EQ(stopped(), came && !noMemory);
      EXPECT_EQ(failed(), noMemory);
      EXPECT_EQ(std::ranges::count(said, "  *** There is not enough memory for this job."), noMemory);
      if (HasFailure()) return showConsole();
    }
  }
}

TEST_P(DiskSweep, WhereverTheDiskIsFull) {
  setBuffer(128);
  prepare(32000);
  bool full = true;
  for (rlim_t room = 50; full; room += room < 1000 ? 9973 : 29989) {
    SCOPED_TRACE("room for " + std::to_string(room));
    {
      const FileLimit limit(room);
      copyOnce();
    }
    full = failed();
    EXPECT_TRUE(!full || says(isSegd(job) ? "  *** Error writing to output file - job will abort."
                                          : "  *** Error writing to disk file \"a.tpf\": File too large."));
    if (HasFailure()) return showConsole();
  }
}

const Job kJobs[] = {
    {"ImageTapeToTape", "UNFORMATTED", true, false, " bytes copied.", " block"},
    {"ImageTapeToDisk", "UNFORMATTED", true, true, " bytes copied.", " block"},
    {"SegdTapeToTape", "SEG D", true, false, " bytes copied.", " block"},
    {"SegyTapeToTape", "SEG Y", true, false, " bytes written.", " traces written.", 2},
    {"ImageDiskToDisk", "UNFORMATTED", false, true, " bytes copied."},
    {"SegdDiskToDisk", "SEG D", false, true, " bytes copied."},
    {"SegyDiskToDisk", "SEG Y", false, true, " bytes written.", " traces written.", 2},
};

std::vector<Job> jobs(bool Job::*kind) {
  std::vector<Job> some;
  std::ranges::copy_if(kJobs, std::back_inserter(some), kind);
  return some;
}
std::string nameOf(const testing::TestParamInfo<Job>& test) { return test.param.name; }

INSTANTIATE_TEST_SUITE_P(Jobs, JobSweep, testing::ValuesIn(kJobs), nameOf);
INSTANTIATE_TEST_SUITE_P(Jobs, DriveSweep, testing::ValuesIn(jobs(&Job::fromTape)), nameOf);
INSTANTIATE_TEST_SUITE_P(Jobs, DiskSweep, testing::ValuesIn(jobs(&Job::toDisk)), nameOf);

}  // namespace
