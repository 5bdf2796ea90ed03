// Field files recorded by others, where QUARLO_SHARED_DATA names their folder; what independent readers found in them
// stands beside them.

#include <gtest/gtest.h>

#include <sstream>

#include "tests/segdcopy/segd_fixture.h"

namespace {

namespace fs = std::filesystem;

/// What the facts say of one file.
struct Facts {
  std::string file;
  long traces = 0;
  long left = 0;
};

long numberBehind(const std::string& text, const std::string& key) {
  const std::size_t place = text.find("\"" + key + "\": ");
  return place == std::string::npos ? -1 : std::strtol(text.c_str() + place + key.size() + 4, nullptr, 10);
}

class SegdRealTest : public SegdTest {
 protected:
  void SetUp() override {
    const char* shared = std::getenv("QUARLO_SHARED_DATA");
    if (shared == nullptr || !fs::is_directory(fs::path(shared) / "segd"))
      GTEST_SKIP() << "QUARLO_SHARED_DATA names no folder with recordings";
    std::istringstream lines(readFile((fs::path(shared) / "segd_facts.txt").string()));
    for (std::string line; std::getline(lines, line);) {
      if (line.starts_with("{ \"file\": \"")) {
        facts.push_back({(fs::path(shared) / line.substr(11, line.find('"', 11) - 11)).string(),
                         numberBehind(line, "ntraces"), numberBehind(line, "bytes_after_traces")});
      }
    }
    ASSERT_GE(facts.size(), 11U);
    setBuffer(128);
  }
  void expectCounts(const Facts& file) {
    char counted[64];
    std::snprintf(counted, sizeof counted, "  -  %4ld traces", file.traces);
    EXPECT_TRUE(lineWith("Field File:").ends_with(counted)) << lineWith("Field File:");
    EXPECT_EQ(lineWith("  ** " + std::to_string(file.left) + " byte").empty(), file.left == 0);
  }

  std::vector<Facts> facts;
};

TEST_F(SegdRealTest, EveryFileComesBackByteForByteFromDiskAndFromTape) {
  for (const Facts& file : facts) {
    SCOPED_TRACE(file.file);
    const std::string name = "in/a" + fs::path(file.file).extension().string();
    fs::copy_file(file.file, folder.path(name), fs::copy_options::overwrite_existing);
    const std::string whole = readFile(folder.path(name));
    const std::string announced = whole.substr(0, whole.size() - static_cast<std::size_t>(file.left));

    EXPECT_EQ(copyFiles(name), 0);
    EXPECT_TRUE(out("line_00001.sgd") == announced);
    expectCounts(file);

    EXPECT_EQ(copyFilesToTape(name), 0);
    expectCounts(file);
    fs::remove("out/line_00001.sgd");
    const Tape tape = tapeIn("out.tap");
    EXPECT_EQ(static_cast<long>(tape.size()), file.traces + 3);
    openInputTape("out.tap");
    openOutputDirectory();
    noFurtherTape();
    EXPECT_EQ(run(), 0);
    EXPECT_TRUE(out("line_00001.sgd") == announced);
    fs::remove(name);
  }
}

}  // namespace
