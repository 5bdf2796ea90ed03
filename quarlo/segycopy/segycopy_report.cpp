#include "quarlo/segycopy/segycopy_report.h"

#include <algorithm>
#include <string>

#include "libkyr/byteorder.h"
#include "libkyr/files.h"
#include "libkyr/text.h"
#include "quarlo/segycopy/segycopy_params.h"
#include "quarlo/segycopy/segysel.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/formats/segybinary.h"
#include "quarlo/tapelib/frame/loglines.h"

namespace {

void reportKey(const char* title, HeaderKey key) {
  console_printf("    - %s -", title);
  console_printf("  Header location   = byte %d", key.byte);
  console_printf("  Data type         = %s", valueBytes(key.type) > 0 ? DataTypes[key.type] : "unknown");
  logBlank();
}

void reportList(const ListParams& list) {
  const char* const kind = list.listType == LS_EXCLUSION ? "exclusion" : "inclusion";
  logBlank();
  console_printf("  Range limit %s list file:", kind);
  console_printf("  %s", joinPath(fieldText(list.dir), fieldText(list.file)).c_str());
  console_out("");
  console_printf("  %d %s points in the %s list.", ControlPoints, kind, kind);
}

void reportPolygon(const PolyParams& polygon) {
  console_printf("  Range limit %s polygon control points:",
                 polygon.polyType == LS_EXCLUSION ? "exclusion" : "inclusion");
  console_out("      Primary             Secondary     ");
  for (std::size_t i = 0; i + 1 < RangePolygon.size(); ++i)
    console_printf("%3zu.  %-12.2lf        %.2lf", i + 1, RangePolygon[i].x, RangePolygon[i].y);
}

void reportRangeLimit(const SgyCopyParams& params) {
  logBlank();
  console_out("~~~~~  Input data will be range limited  ~~~~~");
  logBlank();
  reportKey("Primary Range Limit Key", primaryLimitKey(params));
  if (limitHasSecondary(params)) reportKey("Secondary Range Limit Key", secondaryLimitKey(params));
  if (limitsByPolygon(params))
    reportPolygon(params.polyParams);
  else
    reportList(params.listParams);
  logBlank();
}

void reportSort(const SgyCopyParams& params) {
  logBlank();
  console_out("~~~~~  Input data will be sorted  ~~~~~");
  logBlank();
  reportKey("Primary Sort Key", {params.sortPrimByte, params.sortPrimType});
  reportKey("Secondary Sort Key", {params.sortSecByte, params.sortSecType});
  if (params.useTertiary) reportKey("Tertiary Sort Key", {params.sortTerByte, params.sortTerType});
}

constexpr std::uint32_t kByteOrderSwapped = 0x04030201;

void add(std::string* text, const std::string& fact) { *text += (text->empty() ? "" : ", ") + fact; }

}  // namespace

void report() {
  if (SgyParams.rangeLimit) reportRangeLimit(SgyParams);
  if (SgyParams.sort) reportSort(SgyParams);
}

void warnOfUnusualFile(std::span<const char> binaryHeader) {
  if (binaryHeader.size() < kBinaryHeaderBytes) return;
  const char* const header = binaryHeader.data();
  const auto at = [header](const HeaderKey& key) { return header + key.byte - 1; };
  const int format = loadBeInt16(at(kBinaryFormatCode));
  const int swappedFormat = loadLeInt16(at(kBinaryFormatCode));
  const bool little =
      loadBe32(at(kBinaryByteOrder)) == kByteOrderSwapped || (!isSegyFormat(format) && isSegyFormat(swappedFormat));
  // Two bytes in revision 2, one number before: in a little-endian file that stands the other way round.
  const int revision = std::max(static_cast<unsigned char>(*at(kBinaryRevision)),
                                static_cast<unsigned char>(little ? at(kBinaryRevision)[1] : '\0'));
  // Before revision 1 the place belongs to nobody.
  const int extended = revision < 1 ? 0 : little ? loadLeInt16(at(kBinaryExtended)) : loadBeInt16(at(kBinaryExtended));
  std::string facts;
  if (little)
    add(&facts, "little-endian");
  else if (format != 0 && !isSegyFormat(format))
    add(&facts, formatText("unknown sample format %d", format));
  else if (format != 0 && format != 3 && segySampleBytes(format) != 4)
    add(&facts, formatText("samples of %d byte%s", segySampleBytes(format), plural(segySampleBytes(format))));
  if (revision == 2) add(&facts, "revision 2");
  if (extended != 0 && extended >= -1)
    add(&facts, extended > 0 ? formatText("extended text headers (%d)", extended) : "extended text headers");
  if (!facts.empty()) {
    console_printf(
        "  ** The binary header says: %s. The file is read as big-endian, with 3600 bytes of headers and samples of %d "
        "bytes.",
        facts.c_str(), format == 3 ? 2 : 4);
  }
}
