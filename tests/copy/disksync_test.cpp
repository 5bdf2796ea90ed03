// What the copies say of disk files is true of the disk: every output is waited for before the summary.

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <set>

#include "quarlo/copy/unfmtcpy.h"
#include "quarlo/segycopy/segycopy.h"
#include "quarlo/segycopy/segycopy_params.h"
#include "tests/segdcopy/segd_fixture.h"
#include "tests/support/segy_files.h"

namespace {

std::multiset<std::string> waitedFor;
std::size_t refused = 0;  // the wait that fails, from 1
std::string refusedKind;
std::function<void()> atWait = [] {};

int waitFor(int descriptor, long call) {
  std::error_code unseen;
  const auto path = std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor), unseen);
  waitedFor.insert(path.filename().string());
  atWait();
  if (waitedFor.size() != refused) return static_cast<int>(syscall(call, descriptor));
  refusedKind = call == SYS_fsync ? "directory" : "disk file";
  errno = EIO;
  return -1;
}

}  // namespace

// In the program's place of the C library's.
extern "C" int fdatasync(int descriptor) { return waitFor(descriptor, SYS_fdatasync); }
extern "C" int fsync(int descriptor) { return waitFor(descriptor, SYS_fsync); }

namespace {

class DiskSyncTest : public SegdTest {
 protected:
  ~DiskSyncTest() override {
    atWait = [] {};
    refused = 0;
  }

  /// Runs a job from whatever input is opened to "out/line.sgd", with a healthy disk and with one that refuses each
  /// file and, at last, the directory.
  void expectWaited(const std::function<int()>& job, const std::multiset<std::string>& files, const char* summary) {
    atWait = [this, summary] { EXPECT_FALSE(consoleHas(summary)) << "said before it was on the disk"; };
    for (refused = 0; refused <= files.size(); ++refused) {
      std::filesystem::remove_all("out");
      std::filesystem::create_directory("out");
      waitedFor.clear();
      forgetConsole();
      EXPECT_EQ(job() == 0, refused == 0);
      EXPECT_EQ(waitedFor, files);
      EXPECT_EQ(count("  *** Job Failed."), refused == 0 ? 0 : 1);
      EXPECT_EQ(lineWith("  *** Error writing to " + refusedKind + " \"").empty(), refused == 0);
      EXPECT_TRUE(consoleHas(summary));
    }
  }
  int run(const std::function<int(UnitStruct*)>& job) {
    EXPECT_TRUE(openDiskUnit(&units[1], specOf("out/line.sgd"), "w+b"));
    const int result = job(units);
    closeUnits();
    return result;
  }
};

TEST_F(DiskSyncTest, EveryCopyWaitsForItsFilesBeforeItsSummary) {
  put("f1.segd", {});
  put("f2.segd", {});
  expectWaited([this] { return copyFiles("in/f1.segd"); }, {"line_00001.sgd", "line_00002.sgd", "out"},
               "SEG D Copy Summary:");

  segyInit();
  SgyParams.multipleOut = true;
  SgyParams.bytesPerPart = 1;
  writeFile("in.sgy", segyText() + segyBinary(5) + segyTrace({1}, 5, 1) + segyTrace({2}, 5, 2));
  expectWaited(
      [this] {
        openInputFile("in.sgy");
        return run(doSegyCopy);
      },
      {"line.sgd", "line001.sgy", "out"}, "2 traces written.");
  SgyParams.multipleOut = false;
  SgyParams.sort = SgyParams.keepSortFile = true;
  std::filesystem::create_directory("sorts");
  copyText(SgyParams.sortDir, folder.path("sorts"));
  expectWaited(
      [this] {
        std::filesystem::remove("sorts/Sort.tmp");
        openInputFile("in.sgy");
        return run(doSegyCopy);
      },
      {"line.sgd", "out", "Sort.tmp", "sorts"}, "2 traces read.");

  makeCartridge("in.tap", {block(100, 1), MARK, MARK});
  for (const int kind : {OF_TPF, OF_RAW}) {
    unfmtInit();
    TheOutFileType = kind;
    expectWaited(
        [this] {
          noFurtherTape();
          openInputTape("in.tap");
          return run(doTapeCopy);
        },
        {"line.sgd", "out"}, "   1 block copied.");
  }
  unfmtInit();
}

}  // namespace
