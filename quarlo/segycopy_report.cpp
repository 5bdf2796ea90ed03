#include "quarlo/segycopy_report.h"

#include <algorithm>
#include <string>

#include "libkyr/byteorder.h"
#include "libkyr/files.h"
#include "libkyr/text.h"
#include "quarlo/segycopy_params.h"
#include "quarlo/segysel.h"
#include "quarlo/tapelib/cons_win.h"
#include "quarlo/tapelib/loglines.h"

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
  for (std::size_t i = 0; i + 1 < RangePolygon.size(); ++i) {
    console_printf("%3zu.  %-12.2lf        %.2lf", i + 1, RangePolygon[i].x, RangePolygon[i].y);
  }
}

void reportRangeLimit(const SgyCopyParams& params) {
  logBlank();
  console_out("~~~~~  Input data will be range limited  ~~~~~");
  logBlank();
  reportKey("Primary Range Limit Key", primaryLimitKey(params));
  if (limitHasSecondary(params)) {
    reportKey("Secondary Range Limit Key", secondaryLimitKey(params));
  }
  if (limitsByPolygon(params)) {
    reportPolygon(params.polyParams);
  } else {
    reportList(params.listParams);
  }
  logBlank();
}

void reportSort(const SgyCopyParams& params) {
  logBlank();
  console_out("~~~~~  Input data will be sorted  ~~~~~");
  logBlank();
  reportKey("Primary Sort Key", {params.sortPrimByte, params.sortPrimType});
  reportKey("Secondary Sort Key", {params.sortSecByte, params.sortSecType});
  if (params.useTertiary) {
    reportKey("Tertiary Sort Key", {params.sortTerByte, params.sortTerType});
  }
}

// Places in the binary header, from 0.
constexpr std::size_t FORMAT_AT = 24;
constexpr std::size_t BYTE_ORDER_AT = 96;
constexpr std::size_t REVISION_AT = 300;
constexpr std::size_t EXTENDED_AT = 304;
constexpr std::uint32_t BYTE_ORDER_SWAPPED = 0x04030201;

bool isFormatCode(int code) { return code >= 1 && code <= 16; }

/// Bytes of a sample of a format, for codes from 1 on.
int sampleBytes(int code) {
  constexpr int BYTES[] = {4, 4, 2, 4, 4, 8, 3, 1, 8, 4, 2, 8, 4, 4, 3, 1};
  return BYTES[code - 1];
}

void add(std::string* text, const std::string& fact) { *text += (text->empty() ? "" : ", ") + fact; }

}  // namespace

void report() {
  if (SgyParams.rangeLimit) {
    reportRangeLimit(SgyParams);
  }
  if (SgyParams.sort) {
    reportSort(SgyParams);
  }
}

void warnOfUnusualFile(std::span<const char> binaryHeader) {
  if (binaryHeader.size() < BINARY_HEADER_BYTES) {
    return;
  }
  const char* const header = binaryHeader.data();
  const int format = loadBeInt16(header + FORMAT_AT);
  const int swappedFormat = loadLeInt16(header + FORMAT_AT);
  const bool little =
      loadBe32(header + BYTE_ORDER_AT) == BYTE_ORDER_SWAPPED || (!isFormatCode(format) && isFormatCode(swappedFormat));
  // Two bytes in revision 2, one number before: in a little-endian file that stands the other way round.
  const int revision = std::max(static_cast<unsigned char>(header[REVISION_AT]),
                                static_cast<unsigned char>(little ? header[REVISION_AT + 1] : '\0'));
  // Before revision 1 the place belongs to nobody.
  const int extended = revision < 1 ? 0
                       : little     ? loadLeInt16(header + EXTENDED_AT)
                                    : loadBeInt16(header + EXTENDED_AT);
  std::string facts;
  if (little) {
    add(&facts, "little-endian");
  } else if (format != 0 && !isFormatCode(format)) {
    add(&facts, formatText("unknown sample format %d", format));
  } else if (format != 0 && format != 3 && sampleBytes(format) != 4) {
    add(&facts, formatText("samples of %d byte%s", sampleBytes(format), plural(sampleBytes(format))));
  }
  if (revision == 2) {
    add(&facts, "revision 2");
  }
  if (extended != 0 && extended >= -1) {
    add(&facts, extended > 0 ? formatText("extended text headers (%d)", extended) : "extended text headers");
  }
  if (!facts.empty()) {
    console_printf(
        "  ** The binary header says: %s. The file is read as big-endian, with 3600 bytes of headers and samples of %d "
        "bytes.",
        facts.c_str(), format == 3 ? 2 : 4);
  }
}
