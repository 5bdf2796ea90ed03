// The text form of SEG Y format descriptions: the input as it is, and as a choice of the form's own words. A text that
// is taken is written and read again as the same one, and its fields are encoded into headers of exactly their length.
#include <array>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "quarlo/tapelib/formats/segyencode.h"
#include "quarlo/tapelib/formats/segyformat_text.h"

namespace {

constexpr auto words = std::to_array<std::string_view>({
    "\n[binary Dt]\ntype = int16\nbyte = 17",
    "\n[trace Nt]\ntype = int32\nbyte = 115",
    "\n[trace ",
    "\n[binary ",
    "]",
    "A",
    "]\ntype = float64\nbyte = 5",
    "\noverride = ",
    "\nrange = 1 ",
    "\nscale = ",
    "\ninput-property = 8",
    "\noutput-properties = 1 2 3",
    "\nrequired = yes",
    "\ndescription = ",
    "\ntype = int8",
    "\nbyte = ",
    "-1",
    "2147483647",
    "1e308",
    "0.1",
    " ",
    "\n",
    "\nname = ",
    "\nreel-header = yes\nreel-header-bytes = 3200",
    "\nbinary-header = yes\nbinary-header-bytes = 400",
    "\ntrace-header = yes\ntrace-header-bytes = 240",
    "\nreel-header-file = /a/b",
    "\nreel-header-from-file = yes",
    "\ntrace-types = 1 2 3",
    "\nbig-endian = no",
    "# ",
    "=",
});

void require(bool holds) {
  if (!holds) std::abort();
}

void encode(const SegyFormat& format, bool isBinary) {
  const SegyField* const list = isBinary ? format.itsBinaryFields : format.itsTraceFields;
  const auto bytes = static_cast<std::size_t>(segyHeaderBytes(format, isBinary));
  std::vector<char> header(bytes);
  unsigned flags = 0;
  for (const SegyField* field = list; field != nullptr; field = field->nextField) {
    boundsCheck(&format, list, field, &flags, BOUNDS_ALL);
    const FieldPut put = putFieldValue(&field->itsOverrideValue, list, header, true, field->itsType, field->itsName);
    require((put == FieldPut::Stored) == headerHolds(bytes, *field));
  }
}

void check(const std::string& text) {
  SegyFormat format;
  if (!parseSegyFormat(text, &format).empty()) return;
  const std::string written = printSegyFormat(format);
  SegyFormat again;
  require(parseSegyFormat(written, &again).empty());
  require(printSegyFormat(again) == written);
  checkSegyFormat(format);
  encode(format, true);
  encode(format, false);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* input, std::size_t size) {
  check(std::string(input, input + size));
  std::string text = "Quarlo SEG Y format, version 1, readable from 1\n";
  for (std::size_t i = 0; i < size; ++i) text += words[input[i] % words.size()];
  check(text);
  return 0;
}
