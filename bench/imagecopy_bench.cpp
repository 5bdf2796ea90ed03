// Image copy and verify beside cp and cmp: the jobs themselves, through the copy dialog, without a display.

#include <filesystem>
#include <fstream>

#include "bench/measure.h"
#include "quarlo/copy/copy_dlg.h"
#include "quarlo/copy/vrfy_dlg.h"
#include "quarlo/tapelib/dialogs/cons_win.h"
#include "quarlo/tapelib/driver/driver.h"
#include "resources/ids.h"
#include "tests/support/tap_images.h"
#include "tests/support/test_files.h"
#include "tests/support/test_toolkit.h"

namespace {

constexpr long TOTAL = 256L << 20;

class Bench {
 public:
  Bench() {
    setenv("ST_BUFFER", "1024", 1);
    setenv("QUARLO_VIRTUAL_DRIVES", folder.path("drives").c_str(), 1);
    std::filesystem::create_directory(folder.path("drives"));
    writeFile(folder.path("drives/in.drive"), "id = 1\ncartridge = in.tap\n");
    writeFile(folder.path("drives/out.drive"), "id = 2\ncartridge = out.tap\n");
    toolkit.openTaskWindow([](WINDOW, EVENT*) -> long { return 0; });
    setTapeDriver(nullptr);
    initIO(getDevPtr());
    consInit();
  }

  std::string cartridge(const char* name) const { return folder.path(std::string("drives/") + name); }
  std::string path(const char* name) const { return folder.path(name); }

  void makeInputs(std::size_t blockSize) {
    const std::string data = block(blockSize, 1);
    std::ofstream tap(cartridge("in.tap"), std::ios::binary);
    std::ofstream tpf(path("in.tpf"), std::ios::binary);
    const std::string tapBlock = tapImage({data});
    const std::string tpfBlock = tpfImage({data}).substr(32);
    tpf << "1vlt" << std::string(28, '\0');
    for (long done = 0; done < TOTAL; done += static_cast<long>(blockSize)) {
      tap << tapBlock;
      tpf << tpfBlock;
    }
    tap << tapImage({MARK, MARK});
    tpf << tpfImage({MARK, MARK, MARK}).substr(32);
    tap.close();
    tpf.close();
    std::filesystem::copy_file(path("in.tpf"), path("same.tpf"), std::filesystem::copy_options::overwrite_existing);
    writeFile(cartridge("out.tap"), "");
  }

  void run(int resource, EVENT_HANDLER handler, const std::function<void(WINDOW)>& choose) {
    const WINDOW dialog = xvt_dlg_create_res(WD_MODELESS, resource, handler, nullptr);
    choose(dialog);
    toolkit.onModal(DLG_IN_CONTINUE, [this](WINDOW question) { toolkit.press(question, IC_STOP); });
    toolkit.press(dialog, CP_START);
    toolkit.modals.clear();
    if (toolkit.text(dialog, CP_STATUS) != "Complete") {
      std::fprintf(stderr, "bench: the job failed\n");
      std::exit(1);
    }
    toolkit.close(dialog);
  }
  void drive(WINDOW dialog, int control, int resource, int row) {
    toolkit.onModal(resource, [this, row](WINDOW drives) {
      toolkit.select(drives, DRV_LIST, row);
      toolkit.press(drives, DRV_OK);
    });
    toolkit.press(dialog, control);
  }
  void file(WINDOW dialog, int control, const char* name) {
    toolkit.answerFile(path(name));
    toolkit.press(dialog, control);
  }

  TestFolder folder;
  TestToolkit toolkit;
};

void measure(Bench& bench, std::size_t blockSize, double goal) {
  bench.makeInputs(blockSize);
  const std::string size = std::to_string(blockSize / 1024) + " KB blocks";
  const auto bytes = static_cast<double>(TOTAL);
  const auto cp = bench::syncedShell("cp " + bench.path("in.tpf") + " " + bench.path("peer"), bench.path("peer"));
  const auto cmp = bench::shell("cmp " + bench.path("in.tpf") + " " + bench.path("same.tpf"));
  const std::string copyTap = "cp " + bench.cartridge("in.tap") + " " + bench.path("peer");
  const auto cpTap = bench::shell(copyTap);
  const auto cpTapToDisk = bench::syncedShell(copyTap, bench.path("peer"));

  bench::compare(("copy tpf to tpf, " + size).c_str(), bytes,
                 [&] {
                   bench.run(
                       DLG_COPY, CopyDialog_eh,
                       [&](WINDOW dialog) {
                         bench.file(dialog, CP_INPUT_DISK, "in.tpf");
                         bench.file(dialog, CP_OUTPUT_DISK, "out.tpf");
                       });
                 },
                 "cp", cp, goal);
  bench::compare(("copy tape to tpf, " + size).c_str(), bytes,
                 [&] {
                   bench.run(
                       DLG_COPY, CopyDialog_eh,
                       [&](WINDOW dialog) {
                         bench.drive(dialog, CP_INPUT_TAPE, DLG_INPUT_DRIVE, 0);
                         bench.file(dialog, CP_OUTPUT_DISK, "out.tpf");
                       });
                 },
                 "cp", cpTapToDisk, goal);
  bench::compare(("copy tape to tape, " + size).c_str(), bytes,
                 [&] {
                   bench.run(
                       DLG_COPY, CopyDialog_eh,
                       [&](WINDOW dialog) {
                         bench.drive(dialog, CP_INPUT_TAPE, DLG_INPUT_DRIVE, 0);
                         bench.drive(dialog, CP_OUTPUT_TAPE, DLG_OUTPUT_DRIVE, 1);
                       });
                 },
                 "cp", cpTap, goal);
  bench::compare(("verify tpf with tpf, " + size).c_str(), bytes,
                 [&] {
                   bench.run(DLG_VERIFY, VerifyDialog_eh, [&](WINDOW dialog) {
                     bench.file(dialog, VF_FIRST_DISK, "in.tpf");
                     bench.file(dialog, VF_SECOND_DISK, "same.tpf");
                   });
                 },
                 "cmp", cmp, 1.0);
}

}  // namespace

int main() {
  Bench bench;
  measure(bench, 32768, 1.3);
  measure(bench, 65536, 1.15);
  measure(bench, 262144, 1.15);
  return 0;
}
