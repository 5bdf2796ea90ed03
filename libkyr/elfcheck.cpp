#include "libkyr/elfcheck.h"

#include <elf.h>

#include <bit>

#include "libkyr/byteorder.h"

namespace {

#if defined(__x86_64__)
constexpr unsigned kHostMachine = EM_X86_64;
#elif defined(__aarch64__)
constexpr unsigned hostMachine = EM_AARCH64;
#else
#error "name this machine's ELF number"
#endif
static_assert(std::endian::native == std::endian::little && sizeof(void*) == 8);

/// User space ends below this address on both machines.
constexpr std::uint64_t kAddressLimit = std::uint64_t{1} << 47;

using Bytes = std::span<const unsigned char>;

/// True when `count` items of `size` bytes from `offset` on lie within `limit` bytes; nothing overflows.
bool fits(std::uint64_t offset, std::uint64_t count, std::uint64_t size, std::uint64_t limit) {
  return offset <= limit && (count == 0 || size <= (limit - offset) / count);
}

struct Segment {
  explicit Segment(const unsigned char* bytes)
      : type(loadLe32(bytes + offsetof(Elf64_Phdr, p_type))),
        offset(loadLe64(bytes + offsetof(Elf64_Phdr, p_offset))),
        address(loadLe64(bytes + offsetof(Elf64_Phdr, p_vaddr))),
        fileBytes(loadLe64(bytes + offsetof(Elf64_Phdr, p_filesz))),
        memoryBytes(loadLe64(bytes + offsetof(Elf64_Phdr, p_memsz))),
        alignment(loadLe64(bytes + offsetof(Elf64_Phdr, p_align))) {}

  std::uint32_t type;
  std::uint64_t offset;
  std::uint64_t address;
  std::uint64_t fileBytes;
  std::uint64_t memoryBytes;
  std::uint64_t alignment;
};

const char* identityFault(Bytes head) {
  constexpr unsigned char kMagic[] = {ELFMAG0, ELFMAG1, ELFMAG2, ELFMAG3};
  for (std::size_t i = 0; i < sizeof kMagic; ++i)
    if (i >= head.size() || head[i] != kMagic[i]) return "no shared object";
  if (head.size() < sizeof(Elf64_Ehdr)) return "cut off in its header";
  if (head[EI_CLASS] != ELFCLASS64 || head[EI_DATA] != ELFDATA2LSB) return "made for another machine";
  if (loadLe16(&head[offsetof(Elf64_Ehdr, e_machine)]) != kHostMachine) return "made for another machine";
  if (loadLe16(&head[offsetof(Elf64_Ehdr, e_type)]) != ET_DYN) return "no shared object but another kind of program";
  return nullptr;
}

/// Loading needs no sections, but they stand at the end of a file: one that was cut off has lost them.
const char* sectionFault(Bytes head, std::uint64_t fileSize) {
  const std::uint64_t offset = loadLe64(&head[offsetof(Elf64_Ehdr, e_shoff)]);
  const unsigned count = loadLe16(&head[offsetof(Elf64_Ehdr, e_shnum)]);
  return offset == 0 || fits(offset, count, sizeof(Elf64_Shdr), fileSize) ? nullptr : "cut off";
}

const char* segmentFault(const Segment& segment, std::uint64_t fileSize) {
  if (!fits(segment.offset, 1, segment.fileBytes, fileSize)) return "cut off, or damaged in its segments";
  if (segment.type != PT_LOAD) return nullptr;
  const bool sane = segment.fileBytes <= segment.memoryBytes && segment.address < kAddressLimit &&
                    segment.memoryBytes < kAddressLimit && std::has_single_bit(segment.alignment) &&
                    (segment.address - segment.offset) % segment.alignment == 0;
  return sane ? nullptr : "damaged in its segments";
}

const char* segmentsFault(Bytes head, std::uint64_t fileSize) {
  const std::uint64_t offset = loadLe64(&head[offsetof(Elf64_Ehdr, e_phoff)]);
  const unsigned count = loadLe16(&head[offsetof(Elf64_Ehdr, e_phnum)]);
  if (loadLe16(&head[offsetof(Elf64_Ehdr, e_phentsize)]) != sizeof(Elf64_Phdr)) return "damaged in its header";
  if (!fits(offset, count, sizeof(Elf64_Phdr), head.size())) return "cut off, or damaged in its header";
  bool loads = false;
  bool dynamic = false;
  for (unsigned i = 0; i < count; ++i) {
    const Segment segment(&head[offset + i * sizeof(Elf64_Phdr)]);
    if (const char* fault = segmentFault(segment, fileSize)) return fault;
    loads = loads || segment.type == PT_LOAD;
    dynamic = dynamic || segment.type == PT_DYNAMIC;
  }
  return loads && dynamic ? nullptr : "no shared object: nothing in it to load";
}

}  // namespace

std::string elfFault(Bytes head, std::uint64_t fileSize) {
  const char* fault = identityFault(head);
  if (fault == nullptr) fault = sectionFault(head, fileSize);
  if (fault == nullptr) fault = segmentsFault(head, fileSize);
  return fault != nullptr ? fault : "";
}
