// What the copies say of disk files is true of the disk: every output is waited for before the summary.

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <set>

#include "quarlo/jobframe.h"
#include "quarlo/segycopy.h"
#include "quarlo/segycopy_params.h"
#include "quarlo/unfmtcpy.h"
#include "tests/jobs/segd_fixture.h"
#include "tests/support/segy_files.h"

namespace {

/// What was waited for, and whether the disk refuses it.
struct Disk {
  std::set<std::string> files;
  int calls = 0;
  int refuses = 0;  // the call that fails, from 1
  std::function<void()> atCall;
} disk;

int waitFor(int descriptor, long call) {
  std::error_code unseen;
  const auto path = std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor), unseen);
  disk.files.insert(path.filename().string());
  if (disk.atCall) {
    disk.atCall();
  }
  if (++disk.calls == disk.refuses) {
    errno = EIO;
    return -1;
  }
  return static_cast<int>(syscall(call, descriptor));
}

}  // namespace

// In the program's place of the C library's.
extern "C" int fdatasync(int descriptor) { return waitFor(descriptor, SYS_fdatasync); }
extern "C" int fsync(int descriptor) { return waitFor(descriptor, SYS_fsync); }

namespace {

class DiskSyncTest : public SegdTest {
 protected:
  DiskSyncTest() {
    disk = {};
    segyInit();
    disk.atCall = [this] { EXPECT_FALSE(consoleHas(summary)) << "said before it was on the disk"; };
  }
  ~DiskSyncTest() override { disk = {}; }

  /// Runs a job with a healthy disk, then with one that refuses each of its files, the directory last.
  void expectWaited(const std::function<int()>& job, const std::set<std::string>& files, const std::string& line) {
    summary = line;
    forgetConsole();
    EXPECT_EQ(job(), 0);
    EXPECT_EQ(disk.files, files);
    EXPECT_TRUE(consoleHas(line));
    const int calls = disk.calls;
    EXPECT_EQ(calls, static_cast<int>(files.size()));
    for (int refused = 1; refused <= calls; ++refused) {
      disk.calls = 0;
      disk.refuses = refused;
      forgetConsole();
      EXPECT_NE(job(), 0);
      EXPECT_EQ(count("  *** Job Failed."), 1);
      EXPECT_FALSE(lineWith("  *** Error writing to disk file \"").empty());
      EXPECT_TRUE(consoleHas(line));
    }
  }
  std::string here() { return std::filesystem::path(folder.path("")).parent_path().filename().string(); }

  std::string summary;
};

TEST_F(DiskSyncTest, SegDFilesAndTheirDirectory) {
  for (int number = 1; number <= 3; ++number) {
    FieldFile file;
    file.number = number;
    put("f" + std::to_string(number) + ".segd", file);
  }
  expectWaited([this] { return copyFiles("in/f1.segd"); },
               {"line_00001.sgd", "line_00002.sgd", "line_00003.sgd", "out"}, "SEG D Copy Summary:");
}

TEST_F(DiskSyncTest, SegYVolumes) {
  std::string bytes = segyText() + segyBinary(5);
  for (int record = 1; record <= 3; ++record) {
    bytes += segyTrace({record, 1, 0, 0}, 5, record);
  }
  writeFile(folder.path("in.sgy"), bytes);
  SgyParams.multipleOut = true;
  SgyParams.bytesPerPart = 1;
  expectWaited(
      [this] {
        std::filesystem::remove("line001.sgy");
        std::filesystem::remove("line002.sgy");
        openInputFile("in.sgy");
        EXPECT_TRUE(openDiskUnit(&units[1], specOf("line.sgy"), "w+b"));
        const int result = doSegyCopy(units);
        closeUnits();
        return result;
      },
      {"line.sgy", "line001.sgy", "line002.sgy", here()}, "3 traces written.");
}

TEST_F(DiskSyncTest, ImagesOfEitherKind) {
  makeCartridge("in.tap", {block(100, 1), MARK, MARK});
  for (const int kind : {OF_TPF, OF_RAW}) {
    unfmtInit();
    TheOutFileType = kind;
    disk.files.clear();
    disk.calls = disk.refuses = 0;
    expectWaited(
        [this] {
          noFurtherTape();
          openInputTape("in.tap");
          EXPECT_TRUE(openDiskUnit(&units[1], specOf("out.tpf"), "w+b"));
          const int result = doTapeCopy(units);
          closeUnits();
          return result;
        },
        {"out.tpf", here()}, "   1 block copied.");
  }
  unfmtInit();
}

}  // namespace
