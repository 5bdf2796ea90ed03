#include "quarlo/tapelib/largefile.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <filesystem>
#include <string>

#include "tests/support/test_files.h"

namespace {

TEST(LargeFile, WritesReadsAndKeepsItsPosition) {
  TestFolder folder;
  const std::string path = folder.path("f");
  LargeFile out(path.c_str(), "wb");
  ASSERT_TRUE(out.IsValid());
  EXPECT_EQ(out.Write("hello", 5), 5);
  EXPECT_EQ(out.GetPos(), 5);
  EXPECT_EQ(out.GetSize(), 0);  // not flushed yet
  EXPECT_TRUE(out.Flush());
  EXPECT_EQ(out.GetSize(), 5);
  EXPECT_TRUE(out.Close());
  EXPECT_FALSE(out.IsValid());
  EXPECT_EQ(out.GetSize(), 5);
  EXPECT_EQ(out.Write("x", 1), -1);

  LargeFile in(path.c_str(), "rb");
  char buffer[16];
  EXPECT_EQ(in.Read(buffer, 3), 3);
  EXPECT_FALSE(in.Eof());
  EXPECT_EQ(in.Read(buffer, 16), 2);
  EXPECT_TRUE(in.Eof());
  EXPECT_EQ(in.Read(buffer, 16), 0);
  EXPECT_EQ(in.GetPos(), 5);
  EXPECT_TRUE(in.Seek(-2.9, SEEK_END));
  EXPECT_EQ(in.GetPos(), 3);
  EXPECT_TRUE(in.Eof());  // only Close clears it
  EXPECT_EQ(in.Read(buffer, -1), -1);
  EXPECT_EQ(in.Error(), EINVAL);
  EXPECT_FALSE(in.Seek(-9, SEEK_CUR));
  EXPECT_EQ(in.Error(), EINVAL);
  for (const double wild : {1e30, -1e30, std::nan("")}) EXPECT_FALSE(in.Seek(wild, SEEK_SET));
  EXPECT_EQ(in.GetPos(), 3);
  EXPECT_EQ(in.Write("x", 1), -1);  // opened for reading
  EXPECT_NE(in.Error(), 0);
  EXPECT_EQ(in.Read(buffer, 1), -1);  // and the stream's error stays
}

TEST(LargeFile, FailuresAreResults) {
  TestFolder folder;
  LargeFile none(folder.path("none").c_str(), "rb");
  EXPECT_FALSE(none.IsValid());
  EXPECT_EQ(none.Error(), ENOENT);
  EXPECT_EQ(none.GetSize(), 0);
  EXPECT_EQ(none.Error(), ENOENT);
  EXPECT_TRUE(none.Close());
  LargeFile unnamed(nullptr, "rb");
  EXPECT_FALSE(unnamed.IsValid());
  LargeFile full("/dev/full", "wb");
  ASSERT_TRUE(full.IsValid());
  EXPECT_EQ(full.Write("x", 1), 1);  // in the buffer only
  EXPECT_FALSE(full.Close());
  EXPECT_EQ(full.Error(), ENOSPC);
  EXPECT_TRUE(full.IsValid());
  EXPECT_EQ(full.Write("x", 1), -1);
  EXPECT_FALSE(full.Close());
}

}  // namespace
