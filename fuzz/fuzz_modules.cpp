// The list of format modules over a directory with one damaged file in it: the file is reported and passed over, and
// what the header check lets through lies within the file.

#include <elf.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>

#include "libkyr/byteorder.h"
#include "libkyr/elfcheck.h"
#include "libkyr/process.h"
#include "libkyr/source.h"
#include "quarlo/common/tprcstep.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/modulecalls.h"
#include "quarlo/tapelib/tlv_fcn.h"

namespace {

int reports = 0;

using Bytes = std::span<const std::uint8_t>;

/// The headers of a shared object with nothing behind them: a place for damage.
std::string plainObject() {
  std::string file(4096, '\0');
  Elf64_Ehdr header{};
  std::memcpy(header.e_ident, ELFMAG, SELFMAG);
  header.e_ident[EI_CLASS] = ELFCLASS64;
  header.e_ident[EI_DATA] = ELFDATA2LSB;
  header.e_ident[EI_VERSION] = EV_CURRENT;
  header.e_type = ET_DYN;
#if defined(__x86_64__)
  header.e_machine = EM_X86_64;
#else
  header.e_machine = EM_AARCH64;
#endif
  header.e_version = EV_CURRENT;
  header.e_ehsize = sizeof header;
  header.e_phoff = sizeof header;
  header.e_phentsize = sizeof(Elf64_Phdr);
  header.e_phnum = 2;
  const Elf64_Phdr segments[2] = {{PT_LOAD, PF_R | PF_W, 0, 0, 0, 4096, 4096, 4096},
                                  {PT_DYNAMIC, PF_R | PF_W, 1024, 1024, 1024, 256, 256, 8}};
  std::memcpy(file.data(), &header, sizeof header);
  std::memcpy(file.data() + sizeof header, segments, sizeof segments);
  return file;
}

/// Four bytes of data a piece of damage: where (in the headers or the dynamic table) and what.
std::string damaged(Bytes data) {
  std::string file = plainObject();
  for (; data.size() >= 4; data = data.subspan(4)) {
    const std::size_t place = data[0] % 2 == 0 ? data[1] % 176U : 1024U + data[1];
    file[place] = static_cast<char>(data[2]);
    if (data[3] == 0) file.resize(std::max<std::size_t>(file.size() / 2, 1280));
  }
  return file;
}

void require(bool holds) {
  if (!holds) std::abort();
}

/// What the check passed must be true, reckoned here once more.
void checkSegments(const std::string& file) {
  const auto count = std::size_t{loadLe16(&file[offsetof(Elf64_Ehdr, e_phnum)])};
  const std::uint64_t table = loadLe64(&file[offsetof(Elf64_Ehdr, e_phoff)]);
  for (std::size_t i = 0; i < count; ++i) {
    Elf64_Phdr segment{};
    require(table + (i + 1) * sizeof segment <= file.size());
    std::memcpy(&segment, &file[table + i * sizeof segment], sizeof segment);
    const unsigned __int128 end = static_cast<unsigned __int128>(segment.p_offset) + segment.p_filesz;
    require(end <= file.size());
  }
}

/// A file name of the bytes, with the module's beginning and end.
std::string nameOf(Bytes data) {
  std::string name;
  for (const std::uint8_t byte : data.first(std::min<std::size_t>(data.size(), 240)))
    if (byte != 0 && byte != '/') name += static_cast<char>(byte);
  return "io" + name + ".so";
}

void enterHome() {
  static const bool entered = [] {
    static std::string home = (std::filesystem::temp_directory_path() / "fuzz-modules-XXXXXX").string();
    require(mkdtemp(home.data()) != nullptr);
    std::atexit([] { std::filesystem::remove_all(home); });
    setenv("KYRHOME", home.c_str(), 1);
    std::filesystem::create_directory(home + "/lib");
    return chdir(home.c_str()) == 0;
  }();
  require(entered);
}

}  // namespace

void console_out(const char* /*textStr*/) {}
void console_printf(const char* format, ...) {
  if (std::strstr(format, "shared object") != nullptr || std::strstr(format, "no entry") != nullptr) ++reports;
}
void setConsole(ProcessRecord* /*procRecord*/) {}
void SetDevUnit(ProcessRecord* /*procRecord*/, UnitStruct* /*unit*/) {}
void HoldSources(ProcessRecord* /*procRecord*/, const std::shared_ptr<void>& /*owner*/) {}
void DropSources(ProcessRecord* /*procRecord*/, const std::shared_ptr<void>& /*owner*/) {}
UnitStruct* getDevPtr() { return nullptr; }
void kyrProgressEnd() {}
void xvt_dm_post_error(const char* /*format*/, ...) {}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static unsigned run = 0;
  const Bytes bytes(data, size);
  const std::string file =
      size > 0 && data[0] % 8 == 1 ? std::string(bytes.begin(), bytes.end()) : damaged(bytes.first(size / 4 * 4));
  const auto* head = reinterpret_cast<const unsigned char*>(file.data());
  const bool passes = elfFault({head, std::min(file.size(), kElfHeadSize)}, file.size()).empty();
  if (passes) checkSegments(file);
  // What passes is loaded in a process of its own, which takes its time.
  if (++run % (passes ? 8 : 4) != 0) return 0;
  enterHome();
  const std::string path = "lib/" + nameOf(bytes);
  std::ofstream(path, std::ios::binary) << file;
  reports = 0;
  DllList* list = nullptr;
  const int count = findDlls(&list);
  std::free(list);
  require(count == 0 && reports == 1);
  require(unlink(path.c_str()) == 0);
  return 0;
}
