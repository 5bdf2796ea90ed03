#include "libkyr/launch.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <string>
#include <thread>

#include "tests/support/test_files.h"

namespace fs = std::filesystem;

namespace {

// The program under test is a script that tells what it found and then renames its report to "done".
class Launch : public testing::Test {
 protected:
  Launch() {
    writeFile(program(), "#!/bin/sh\ncd '" + folder.path("") + "'\n{ echo \"$# $1\"; ls /proc/self/fd | tr '\\n' ' ';" +
                             " } > report\nmv report done\n");
    fs::permissions(program(), fs::perms::owner_all);
  }

  fs::path program() const { return folder.path("companion"); }

  // What the program wrote; empty after ten seconds without.
  static std::string report() {
    for (int i = 0; i < 1000 && !fs::exists("done"); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return readFile("done");
  }

  const TestFolder folder;
};

TEST_F(Launch, RunsDetachedWithArgumentsAndNoInheritedFiles) {
  const int drive = open("/dev/null", O_RDONLY);  // opened without close-on-exec
  ASSERT_TRUE(wxExecuteHack((program().string() + " 'two words'").c_str()));
  // Standard files, and the descriptor by which ls reads the directory.
  EXPECT_EQ(report(), "1 two words\n0 1 2 3 ");
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);  // no child of ours, not even a zombie
  EXPECT_EQ(errno, ECHILD);
  close(drive);
}

TEST_F(Launch, FindsBareNamesInPath) {
  const char* path = getenv("PATH");
  const std::string before = path != nullptr ? path : "";
  setenv("PATH", (folder.path("") + ":" + before).c_str(), 1);
  EXPECT_TRUE(wxExecuteHack("companion"));
  EXPECT_EQ(report().substr(0, 2), "0 ");
  setenv("PATH", before.c_str(), 1);
}

TEST_F(Launch, FindsBareNamesBesideTheRunningProgram) {
  const fs::path here = fs::read_symlink("/proc/self/exe").parent_path();
  const fs::path copy = here / ("companion-" + std::to_string(getpid()));
  fs::copy_file(program(), copy);
  EXPECT_TRUE(wxExecuteHack(copy.filename().c_str()));
  EXPECT_FALSE(report().empty());
  fs::remove(copy);
}

TEST_F(Launch, TellsWhenNothingStarted) {
  EXPECT_FALSE(wxExecuteHack("no-such-program-anywhere"));
  EXPECT_EQ(errno, ENOENT);
  fs::permissions(program(), fs::perms::owner_read);
  EXPECT_FALSE(wxExecuteHack(program().c_str()));
  EXPECT_EQ(errno, EACCES);
  EXPECT_FALSE(wxExecuteHack(""));
  EXPECT_FALSE(wxExecuteHack(nullptr));
  EXPECT_FALSE(wxExecuteHack("touch $(echo never)"));
}

}  // namespace
