// Small copies of every kind, and at every place in them what can come there: an operation of a drive that fails, the
// user who stops or closes the dialog, memory that is wanting, a full disk. Each run ends, its log is true of what the
// output holds, its units are closed. A transient fault may cost the job, never a block in silence.

#include <bit>
#include <numeric>

#include "libkyr/byteorder.h"
#include "libkyr/datasets.h"
#include "libkyr/nullvalue.h"
#include "quarlo/reformat/rfmt_dlg.h"
#include "quarlo/tapelib/jobstate.h"
#include "tests/segdcopy/segd_fixture.h"
#include "tests/support/dataset_maker.h"
#include "tests/support/segy_files.h"

namespace {

struct Job {
  const char* name;
  const char* format;
  bool fromTape;
  bool toDisk;
  const char* bytesTold;  // how the log's line of the bytes ends, and that of the blocks where it has one
  const char* blocksTold = nullptr;
  std::ptrdiff_t headers = 0;      // blocks that these lines do not count
  const char* reformat = nullptr;  // what its input is reformatted to
  int stride = 1;                  // of the places that are tried
};

bool isImage(const Job& job) { return std::string(job.format) == "UNFORMATTED"; }
bool isSegd(const Job& job) { return std::string(job.format) == "SEG D"; }

/// Bytes of floats as SEG Y has them.
std::string bigEndian(std::span<const float> samples) {
  std::string bytes(4 * samples.size(), '\0');
  for (std::size_t i = 0; i < samples.size(); ++i)
    storeBe32(bytes.data() + 4 * i, std::bit_cast<std::uint32_t>(samples[i]));
  return bytes;
}

/// What the input of a job holds; traces and blocks grow with `samples`.
Tape tapeOf(const Job& job, int samples) {
  const auto length = static_cast<std::size_t>(samples);
  if (isImage(job))
    return {block(length, 1), block(7, 2), MARK, block(4 * length, 3), block(11, 4), block(length, 5), MARK, MARK};
  std::string binary = segyBinary(samples, job.reformat != nullptr ? 5 : 1);
  if (job.reformat != nullptr) putBig(&binary, 12, 4, 2);  // traces a record
  if (!isSegd(job)) return {segyText(), binary, segyTrace({}, samples, 1), segyTrace({}, samples, 2), MARK, MARK};
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
  JobSweep() {
    std::filesystem::create_directory("lib");
    for (const char* module : {"iosegy.so", "iokyr.so"})
      std::filesystem::create_symlink(QUARLO_BUILT_MODULES + std::string(module), std::string("lib/") + module);
    setenv("KYRHOME", folder.path("").c_str(), 1);
  }
  ~JobSweep() override {
    unsetenv("QUARLO_TAPE_FAULT");
    unsetenv("KYRHOME");
    if (xvt_vobj_is_valid(dialog)) toolkit.close(dialog);
  }

  void prepare(int samples = 10) {
    const Tape tape = tapeOf(job, samples);
    whole = isImage(job) ? tape + Tape{MARK} : tape;
    if (job.toDisk && !isImage(job)) whole = blocksOf(whole);
    if (job.reformat != nullptr && job.toDisk) whole = {tape[2].substr(240), tape[3].substr(240)};
    if (job.reformat != nullptr && !job.fromTape) makeDataset(tape, samples);
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
  void makeDataset(const Tape& tape, int samples) {
    ::makeDataset(folder.path("in/a.kyr"), 1, 2, {.samples = samples, .interval = kNullFloat},
                  [&](int, int trace, TraceInfo*, float* values) {
                    const std::string& block = tape[static_cast<std::size_t>(trace) + 1];
                    for (int i = 0; i < samples; ++i)
                      values[i] = loadBeFloat(block.data() + 240 + 4 * static_cast<std::size_t>(i));
                    return true;
                  });
  }
  /// The traces of the dataset that came out, as far as they can be read.
  static Tape tracesIn(const std::string& path) {
    const ProcessRecordPtr record(NewProcessRecord());
    record->consoleLine = [](const char*) {};
    Link link;
    SetNumberOfInputs(record.get(), 1);
    if (NewInputFile(&link, record.get(), path.c_str(), 0, kAnySeismicType) != kyrOk) return {};
    GeneralSeisDataOrg org;
    GetSeisOrg(record.get(), link, &org);
    const SeisCounts counts = seisOrgCounts(org);
    std::vector<float> samples(static_cast<std::size_t>(counts.samples));
    Tape traces;
    TraceInfo header;
    for (int trace = 1; counts.records > 0 && trace <= counts.tracesPerRecord; ++trace)
      if (TraceGet(record.get(), link, 1, trace, samples.data(), &header) == kyrOk && !IsDead(header))
        traces.push_back(bigEndian(samples));
    return traces;
  }
  /// Opens the job's dialog and chooses what it reads and writes.
  void chooseAll() {
    if (job.reformat == nullptr) {
      if (!xvt_vobj_is_valid(dialog)) openCopyDialog();
      toolkit.select(dialog, CP_FORMAT, job.format);
      if (job.fromTape) chooseDrive(CP_INPUT_TAPE, DLG_INPUT_DRIVE, "drive0");
      if (!job.fromTape) chooseInputFile(folder.path("in/a.segd"));
      if (!job.toDisk) chooseDrive(CP_OUTPUT_TAPE, DLG_OUTPUT_DRIVE, "drive1");
      if (job.toDisk) chooseOutputFile(folder.path(isSegd(job) ? "out" : "out/a.tpf"));
      return;
    }
    if (xvt_vobj_is_valid(dialog)) toolkit.close(dialog);  // its tape stays where a run left it
    open(DLG_REFORMAT, ReformatDialog_eh);
    toolkit.select(dialog, RF_INPUT_FORMAT, job.format);
    toolkit.select(dialog, RF_OUTPUT_FORMAT, job.reformat);
    if (job.fromTape) chooseDrive(RF_INPUT_TAPE, DLG_INPUT_DRIVE, "drive0");
    if (!job.fromTape) chooseFile(RF_INPUT_DISK, folder.path("in/a.kyr"));
    if (!job.toDisk) chooseDrive(RF_OUTPUT_TAPE, DLG_OUTPUT_DRIVE, "drive1");
    if (job.toDisk) chooseFile(RF_OUTPUT_DISK, folder.path("out/a.kyr"));
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
    chooseAll();
    if (state() != "Ready") return;
    if (job.fromTape) noFurtherTape();
    noFurtherOutput();
    toolkit.pumps = 0;
    forgetConsole();
    toolkit.press(dialog, job.reformat != nullptr ? int{RF_RUN} : int{CP_START});
    toolkit.modals.clear();
    said = consoleWithoutDates();
    expectTruth();
  }
  std::string state() { return toolkit.text(dialog, job.reformat != nullptr ? int{RF_STATUS} : int{CP_STATUS}); }

  /// The items on the output; one that is not whole is none of the input's.
  Tape held() {
    if (job.reformat != nullptr && job.toDisk) return tracesIn(folder.path("out/a.kyr"));
    Tape tape = tapeIn("out.tap");
    // The text header has a date, trace headers are new.
    for (std::size_t i = 0; job.reformat != nullptr && i < tape.size() && !tape[i].empty(); ++i)
      if (tape[i].size() == whole[i].size())
        tape[i].replace(0, i < 2 ? tape[i].size() : 240, whole[i], 0, i < 2 ? whole[i].size() : 240);
    if (!job.toDisk) return tape;
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
      if (line.find(what) != line.npos && line.ends_with('.') && line.find("***") == line.npos)
        return std::atol(line.c_str());
    return -1;
  }
  void expectTruth() {
    const Tape now = held();
    const Tape blocks = blocksOf(now);
    const Tape all = blocksOf(whole);
    ASSERT_LE(blocks.size(), all.size());
    EXPECT_EQ(shortly(blocks), shortly(Tape(all.begin(), all.begin() + std::ssize(blocks))));
    const Tape counted(blocks.begin() + std::min(std::ssize(blocks), job.headers), blocks.end());
    EXPECT_TRUE(job.bytesTold == nullptr || told(job.bytesTold) == std::ssize(joined(counted)));
    EXPECT_TRUE(job.blocksTold == nullptr || std::max(0L, told(job.blocksTold)) == std::ssize(counted))
        << counted.size() << " blocks";
    EXPECT_TRUE(!isSegd(job) || told(" field file") <= std::ssize(counted) / 3);
    EXPECT_TRUE(says("Copy ended at DATE.") || says(std::string(job.format) + " copy ended at DATE.") ||
                says("Reformat ended at DATE.") || neverBegan());
    // A tape, or its image, that the job leaves of its own accord ends with two marks.
    const bool closed = now.size() > 1 && now.back() == MARK && now[now.size() - 2] == MARK;
    EXPECT_TRUE(failed() || blocks.empty() || closed || (job.toDisk && !isImage(job)));
    EXPECT_TRUE(failed() || stopped() || now == whole || neverBegan());
    // A tape that cannot be closed behind the summary fails the run as well, in a line of its own.
    EXPECT_TRUE(!xvt_vobj_is_valid(dialog) || (state() == "Complete" && !failed()) ||
                (state() == "Failed" && saysError()) || (job.reformat != nullptr && stopped()))
        << state();
    // A reformat's input tape waits for its next run.
    for (int unit = job.reformat != nullptr && job.fromTape ? 1 : 0; unit <= DRIVES; ++unit) {
      EXPECT_EQ(std::tuple(units[unit].state, units[unit].fd, units[unit].fp), std::tuple(0, 0, nullptr));
    }
    EXPECT_FALSE(jobIsRunning() || toolkit.hasTimers());
    EXPECT_EQ(toolkit.dialog(DLG_PROGRESS), NULL_WIN);
  }
  bool says(const std::string& line) { return std::ranges::find(said, line) != said.end(); }
  bool failed() { return says("  *** Job Failed."); }
  /// A module says why before there is a run.
  bool neverBegan() { return job.reformat != nullptr && !says("Reformat started at DATE.") && saysError(); }
  /// An output tape that says it is full is followed by a question for the next one.
  bool declined() {
    return std::ranges::any_of(said, [](auto& line) { return line.ends_with("what follows it were not written."); });
  }
  bool stopped() {
    return declined() || says("  *** Copy aborted by user at DATE.") || says("  *** Reformat aborted by user at DATE.");
  }
  bool saysError() {
    return std::ranges::any_of(said, [](auto& line) { return line.starts_with("  *** "); });
  }
  bool clean() { return state() == "Complete" && toolkit.errors.empty() && !saysError(); }
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
    for (int operation = 1; cleanInARow * job.stride < 40; operation += job.stride) {
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
    EXPECT_TRUE(retried || error == "short" || !job.fromTape) << error << " never came to a read";
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
    for (long at = 1; came; at += job.stride) {
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
    EXPECT_TRUE(clean()) << "where nothing came, all is copied";
  }
}

TEST_P(DiskSweep, WhereverTheDiskIsFull) {
  setBuffer(128);
  prepare(32000);
  bool full = true;
  for (rlim_t room = 50; full; room += job.stride * (room < 1000 ? 9973 : 29989)) {
    SCOPED_TRACE("room for " + std::to_string(room));
    {
      const FileLimit limit(room);
      copyOnce();
    }
    full = failed();
    EXPECT_TRUE(!full || job.reformat != nullptr ||
                says(isSegd(job) ? "  *** Error writing to output file - job will abort."
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
    {"ReformatTapeToDataset", "SEG Y", true, true, nullptr, " written.", 0, "Kyr", 3},
    {"ReformatDatasetToTape", "Kyr", false, false, nullptr, " written.", 2, "SEG Y", 3},
};

bool hasDrive(const Job& job) { return job.fromTape || !job.toDisk; }

template <typename Kind>
std::vector<Job> jobs(Kind kind) {
  std::vector<Job> some;
  std::ranges::copy_if(kJobs, std::back_inserter(some), kind);
  return some;
}
std::string nameOf(const testing::TestParamInfo<Job>& test) { return test.param.name; }

INSTANTIATE_TEST_SUITE_P(Jobs, JobSweep, testing::ValuesIn(kJobs), nameOf);
INSTANTIATE_TEST_SUITE_P(Jobs, DriveSweep, testing::ValuesIn(jobs(hasDrive)), nameOf);
INSTANTIATE_TEST_SUITE_P(Jobs, DiskSweep, testing::ValuesIn(jobs(&Job::toDisk)), nameOf);

}  // namespace
