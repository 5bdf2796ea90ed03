/// SEG Y copies without their dialogs: settings straight in SgyParams, units opened straight on files and drives.
#pragma once

#include "libkyr/text.h"
#include "quarlo/segycopy/segycopy.h"
#include "quarlo/segycopy/segysel.h"
#include "tests/support/segy_files.h"
#include "tests/support/units_fixture.h"

/// Samples of a trace of the usual length.
constexpr int SAMPLES = 5;

inline std::string trace(int serial, const TraceWords& words = {}) { return segyTrace(words, SAMPLES, serial); }

class SegyTest : public UnitsTest {
 protected:
  SegyTest() { segyInit(); }

  void openOutputFile(const std::string& name) { ASSERT_TRUE(openDiskUnit(&units[1], specOf(name), "w+b")); }
  /// Runs the job on the open units and closes them.
  int run() {
    forgetConsole();
    const int result = doSegyCopy(units);
    closeUnits();
    return result;
  }
  int copyFile(const std::string& in, const std::string& out = "out.sgy") {
    openInputFile(in);
    openOutputFile(out);
    return run();
  }
  std::string output(const std::string& name = "out.sgy") { return readFile(folder.path(name)); }
  bool exists(const std::string& name) { return std::filesystem::exists(folder.path(name)); }

  /// A list limit on the default keys, from a file with this text.
  void limitByList(const std::string& text, bool useSecondary = false) {
    writeFile(folder.path("list.txt"), text);
    SgyParams.rangeLimit = true;
    SgyParams.limitType = LT_LIST;
    SgyParams.listParams.useSec = useSecondary;
    copyText(SgyParams.listParams.dir, folder.path(""));
    copyText(SgyParams.listParams.file, "list.txt");
  }
  void limitByPolygonFile(const std::string& text) {
    writeFile(folder.path("poly.txt"), text);
    SgyParams.rangeLimit = true;
    SgyParams.limitType = LT_POLYGON;
    copyText(SgyParams.polyParams.dir, folder.path(""));
    copyText(SgyParams.polyParams.file, "poly.txt");
  }
  void sortTraces() {
    SgyParams.sort = true;
    copyText(SgyParams.sortDir, folder.path(""));
  }
};
