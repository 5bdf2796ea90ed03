#include "libkyr/files.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>

#include "tests/support/test_files.h"

namespace fs = std::filesystem;

namespace {

class Files : public testing::Test {
 protected:
  const TestFolder folder;
};

TEST_F(Files, JoinsByOneSlash) {
  EXPECT_EQ(joinPath("/data", "a.tpf"), "/data/a.tpf");
  EXPECT_EQ(joinPath("/data/", "a.tpf"), "/data/a.tpf");
  EXPECT_EQ(joinPath("/", "a"), "/a");
  EXPECT_EQ(joinPath("", "a"), "a");
  EXPECT_EQ(joinPath("/data", ""), "/data");
  EXPECT_EQ(joinPath("/data", "/tmp/a"), "/tmp/a");
}

TEST_F(Files, SameFileByAnyPath) {
  for (const char* name : {"a", "b"}) writeFile(name, "text");
  fs::create_directory("d");
  fs::create_symlink("a", "soft");
  fs::create_hard_link("a", "hard");
  fs::create_directory_symlink("d", "dlink");
  for (const char* other : {"a", "./a", "soft", "hard", "d/../a", "dlink/../a"})
    EXPECT_TRUE(sameFile(folder.path("a").c_str(), other)) << other;
  EXPECT_FALSE(sameFile("a", "b"));
  EXPECT_FALSE(sameFile("a", "new"));
}

TEST_F(Files, SameFileBeforeItExists) {
  fs::create_directory("d");
  fs::create_directory_symlink("d", "dlink");
  EXPECT_TRUE(sameFile("new", folder.path("new").c_str()));
  EXPECT_TRUE(sameFile("d/new", "dlink/new"));
  EXPECT_FALSE(sameFile("d/new", "new"));
  EXPECT_FALSE(sameFile("new", "newer"));
  EXPECT_FALSE(sameFile("missing/new", "missing/new"));
  EXPECT_FALSE(sameFile("", ""));
  EXPECT_FALSE(sameFile(nullptr, "new"));
}

TEST_F(Files, SizesOfRegularFilesOnly) {
  EXPECT_FALSE(fileSize("missing"));
  EXPECT_FALSE(fileSize("."));
  const FileHandle file = openFile("big", "wb");
  ASSERT_TRUE(file);
  ASSERT_EQ(ftruncate(fileno(file.get()), off_t{5} << 30), 0);
  EXPECT_EQ(fileSize("big"), std::uint64_t{5} << 30);
  EXPECT_EQ(fileSize(file.get()), std::uint64_t{5} << 30);
}

TEST_F(Files, BufferHoldsSmallWritesBackAndIsWrittenAtTheClose) {
  FileHandle file = openFile("out", "wb");
  ASSERT_TRUE(file);
  const std::string piece(1000, 'x');
  for (int i = 0; i < 100; ++i) ASSERT_EQ(std::fwrite(piece.data(), 1, piece.size(), file.get()), piece.size());
  EXPECT_EQ(fileSize("out"), 0U);  // 100,000 bytes are less than the buffer
  EXPECT_TRUE(closeFile(file));
  EXPECT_FALSE(file);
  EXPECT_EQ(fileSize("out"), 100000U);
  EXPECT_TRUE(closeFile(file));
}

TEST_F(Files, HandlesMoveWithTheirBuffers) {
  FileHandle first = openFile("one", "wb");
  FileHandle second = openFile("two", "wb");
  std::fputs("one", first.get());
  std::fputs("two", second.get());
  first = std::move(second);  // closes "one" while its buffer is there
  EXPECT_EQ(fileSize("one"), 3U);
  std::fputs("more", first.get());
  EXPECT_TRUE(closeFile(first));
  EXPECT_EQ(fileSize("two"), 7U);
}

TEST_F(Files, FailuresAreTold) {
  EXPECT_FALSE(openFile("missing/out", "wb"));
  EXPECT_EQ(errno, ENOENT);
  FileHandle full = openFile("/dev/full", "wb");
  ASSERT_TRUE(full);
  std::fputs("text", full.get());
  EXPECT_FALSE(closeFile(full));
}

}  // namespace
