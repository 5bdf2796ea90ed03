// Loading shared objects: whole ones, and all kinds of broken ones, of which none may hurt the program.
#include <elf.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

#include "libkyr/byteorder.h"
#include "libkyr/elfcheck.h"
#include "libkyr/sharedobject.h"
#include "tests/support/test_files.h"

namespace {

const std::string modules = QUARLO_TEST_MODULES;

/// The judgement of a file, or of one that was cut off behind `size` bytes.
std::string faultOf(const std::string& file, std::size_t size = std::string::npos) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(file.data());
  size = std::min(size, file.size());
  return elfFault({bytes, std::min(size, kElfHeadSize)}, size);
}

TEST(ElfCheck, PassesRealObjectsAndNoPartOfThem) {
  const std::string whole = readFile(modules + "ioplain.so");
  ASSERT_GT(whole.size(), 4096U);
  EXPECT_EQ(faultOf(whole), "");
  for (std::size_t size = 0; size < whole.size(); size += size < 1000 ? 1 : 97)
    ASSERT_NE(faultOf(whole, size), "") << size;
  EXPECT_NE(faultOf(readFile("/proc/self/exe"), 100000), "");
}

TEST(ElfCheck, FindsDamagedHeaderFields) {
  const std::string whole = readFile(modules + "ioplain.so");
  const std::size_t segments = sizeof(Elf64_Ehdr);  // the linkers put them there
  const struct {
    const char* what;
    std::size_t offset;
    std::size_t size;
    std::uint64_t value;
  } table[] = {{"class", EI_CLASS, 1, ELFCLASS32},
               {"byte order", EI_DATA, 1, ELFDATA2MSB},
               {"machine", offsetof(Elf64_Ehdr, e_machine), 2, EM_SPARC},
               {"type", offsetof(Elf64_Ehdr, e_type), 2, ET_EXEC},
               {"entry size", offsetof(Elf64_Ehdr, e_phentsize), 2, 55},
               {"no segments", offsetof(Elf64_Ehdr, e_phnum), 2, 0},
               {"too many segments", offsetof(Elf64_Ehdr, e_phnum), 2, 0xFFFF},
               {"segments far out", offsetof(Elf64_Ehdr, e_phoff), 8, ~0ULL - 8},
               {"sections far out", offsetof(Elf64_Ehdr, e_shoff), 8, ~0ULL - 8},
               {"segment offset", segments + offsetof(Elf64_Phdr, p_offset), 8, ~0ULL},
               {"segment file size", segments + offsetof(Elf64_Phdr, p_filesz), 8, whole.size() + 1},
               {"segment memory size", segments + offsetof(Elf64_Phdr, p_memsz), 8, 1},
               {"segment address", segments + offsetof(Elf64_Phdr, p_vaddr), 8, ~0ULL << 12},
               {"segment alignment", segments + offsetof(Elf64_Phdr, p_align), 8, 0x1001}};
  for (const auto& row : table) {
    std::string damaged = whole;
    for (std::size_t i = 0; i < row.size; ++i) damaged[row.offset + i] = static_cast<char>(row.value >> (8 * i));
    EXPECT_NE(faultOf(damaged), "") << row.what;
  }
}

class SharedObjectTest : public testing::Test {
 protected:
  /// Tries to load; the object is gone again. @return the reason of the failure, "" after success
  static std::string attempt(const std::string& path) {
    std::string why = "not set";
    void* object = loadSharedObject(path, &why);
    EXPECT_EQ(object == nullptr, !why.empty());
    unloadSharedObject(object);
    return why;
  }

  TestFolder folder;
};

TEST_F(SharedObjectTest, LoadsAndFindsByPath) {
  std::filesystem::copy(modules + "ioplain.so", folder.path("x.so"));
  for (const std::string& path : {std::string("x.so"), std::string("./x.so"), folder.path("x.so")}) {
    void* object = loadSharedObject(path, nullptr);
    ASSERT_NE(object, nullptr) << path;
    EXPECT_NE(findSymbol(object, "GetTuDllIdentifier"), nullptr);
    EXPECT_EQ(findSymbol(object, "TMainPhase"), nullptr);
    EXPECT_EQ(findSymbol(object, nullptr), nullptr);
    unloadSharedObject(object);
  }
  EXPECT_EQ(findSymbol(nullptr, "malloc"), nullptr) << "a null handle is no wish to search the whole program";
  unloadSharedObject(nullptr);
}

TEST_F(SharedObjectTest, ReportsWhatIsNoObject) {
  EXPECT_EQ(attempt("none.so"), "No such file or directory");
  std::filesystem::create_directory("directory.so");
  EXPECT_NE(attempt("directory.so"), "");
  ASSERT_EQ(mkfifo("pipe.so", 0600), 0);
  EXPECT_EQ(attempt("pipe.so"), "no regular file");
  EXPECT_EQ(attempt("/dev/zero"), "no regular file");
  writeFile("empty.so", "");
  EXPECT_EQ(attempt("empty.so"), "no shared object");
  writeFile("text.so", "#!/bin/sh\n");
  EXPECT_EQ(attempt("text.so"), "no shared object");
  EXPECT_NE(attempt("/proc/self/exe"), "") << "a program is no module";
}

TEST_F(SharedObjectTest, SurvivesObjectsThatDoNotSurviveLoading) {
  EXPECT_EQ(attempt(modules + "iocrash.so"), "crashes while it is loaded");
  EXPECT_EQ(attempt(modules + "ioexit.so"), "crashes while it is loaded");
  EXPECT_NE(attempt(modules + "iomissing.so").find("nowhereToBeFound"), std::string::npos);
}

TEST_F(SharedObjectTest, AnObjectMayStartAProcess) { EXPECT_EQ(attempt(modules + "iofork.so"), ""); }

TEST_F(SharedObjectTest, AFileIsTriedAgainOnlyWhenItChanges) {
  std::filesystem::copy(modules + "ioplain.so", "x.so");
  EXPECT_EQ(attempt("x.so"), "");
  std::filesystem::remove("x.so");
  std::filesystem::copy(modules + "iocrash.so", "x.so");
  for (int time = 0; time < 2; ++time) EXPECT_EQ(attempt("x.so"), "crashes while it is loaded");
  EXPECT_EQ(readFile("trials"), "x");
  std::filesystem::remove("x.so");
  std::filesystem::copy(modules + "ioplain.so", "x.so");
  EXPECT_EQ(attempt("x.so"), "");
}

// What the loader trusts without looking: the tables in the middle of the file.
TEST_F(SharedObjectTest, SurvivesDamageAnywhere) {
  const std::string whole = readFile(modules + "ioplain.so");
  int refused = 0;
  for (std::size_t at = 0; at + 16 < whole.size() && at < 0x4000; at += 331) {
    std::string damaged = whole;
    damaged.replace(at, 16, 16, '\x7F');
    // A new name each time: a file that changes while it is mapped would be another test.
    const std::string name = "damaged" + std::to_string(at) + ".so";
    writeFile(name, damaged);
    if (!attempt(name).empty()) ++refused;
  }
  EXPECT_GT(refused, 3);
}

}  // namespace
