#include "quarlo/segycopy/segysel.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

#include "libkyr/text.h"
#include "quarlo/segycopy/segycopy_params.h"
#include "quarlo/segycopy/segysort.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/frame/loglines.h"
#include "xvt/xvt.h"

std::vector<PolygonElement> RangePolygon;
double MinX = 0;
double MaxX = 0;
double MinY = 0;
double MaxY = 0;
std::vector<RangeItem> PointsList;
int ControlPoints = 0;
FileHandle LogFile;
double Primary = 0;
double Secondary = 0;
double MinPrimary = 0;
double MaxPrimary = 0;
double MinSecondary = 0;
double MaxSecondary = 0;

namespace {

constexpr const char* kLogName = "RangeLimitLogFile.txt";

// ---- the log ----------------------------------------------------------------------------------------------------

bool openLog(const std::string& source) {
  const std::string path = rangeLimitLogPath();
  // A list or polygon file of that very name would be emptied.
  if (!sameFile(path.c_str(), source.c_str())) LogFile = openFile(path.c_str(), "w");
  if (!LogFile) console_printf("  *** Error opening range limit log file: %s", path.c_str());
  return LogFile != nullptr;
}

void stopLogging() {
  console_out("  *** Error writing to range limit log file.");
  LogFile.reset();
}

/// A key value as "%.4lf" has it, much faster: a line is written for every trace.
char* formatKey(char* to, char* end, double value) {
  return std::to_chars(to, end, value, std::chars_format::fixed, 4).ptr;
}

void logTrace() {
  constexpr std::size_t kLongestValue = 320;  // the largest double with four decimals
  char line[2 * kLongestValue + 4];
  char* const limit = line + sizeof line;
  char* end = formatKey(line, limit, Primary);
  if (limitHasSecondary(SgyParams)) {
    end = std::fill_n(end, 3, ' ');
    end = formatKey(end, limit, Secondary);
  }
  *end++ = '\n';
  const auto length = static_cast<std::size_t>(end - line);
  if (std::fwrite(line, 1, length, LogFile.get()) != length) stopLogging();
}

// ---- the range of the kept traces -------------------------------------------------------------------------------

bool anyTraceKept = false;  // in this run of the program: never reset

void widenRange() {
  if (std::isnan(Primary) || std::isnan(Secondary)) return;
  if (!anyTraceKept) {
    MinPrimary = MaxPrimary = Primary;
    MinSecondary = MaxSecondary = Secondary;
    anyTraceKept = true;
    return;
  }
  MinPrimary = std::min(MinPrimary, Primary);
  MaxPrimary = std::max(MaxPrimary, Primary);
  MinSecondary = std::min(MinSecondary, Secondary);
  MaxSecondary = std::max(MaxSecondary, Secondary);
}

// ---- the polygon ------------------------------------------------------------------------------------------------

void useTypedPoints(PolyParams& params) {
  params.numPoints = std::clamp(params.numPoints, 1, kMaxTypedPoints);
  for (int i = 0; i < params.numPoints; ++i) RangePolygon.push_back({params.primary[i], params.secondary[i]});
}

void closePolygon() {
  const auto byX = [](const PolygonElement& a, const PolygonElement& b) { return a.x < b.x; };
  const auto byY = [](const PolygonElement& a, const PolygonElement& b) { return a.y < b.y; };
  const auto [left, right] = std::ranges::minmax_element(RangePolygon, byX);
  const auto [low, high] = std::ranges::minmax_element(RangePolygon, byY);
  MinX = left->x;
  MaxX = right->x;
  MinY = low->y;
  MaxY = high->y;
  RangePolygon.push_back(RangePolygon.front());
}

bool inPolygon() {
  return Primary >= MinX && Primary <= MaxX && Secondary >= MinY && Secondary <= MaxY &&
         windingPolygonPointInPoly(Primary, Secondary, RangePolygon.data(),
                                   static_cast<int>(RangePolygon.size()) - 1) != 0;
}

std::string listPath() { return joinPath(fieldText(SgyParams.listParams.dir), fieldText(SgyParams.listParams.file)); }
std::string polygonPath() {
  return joinPath(fieldText(SgyParams.polyParams.dir), fieldText(SgyParams.polyParams.file));
}

}  // namespace

std::string limitSourcePath() {
  if (!SgyParams.rangeLimit || (limitsByPolygon(SgyParams) && SgyParams.polyParams.type == PS_TYPED)) return "";
  return limitsByPolygon(SgyParams) ? polygonPath() : listPath();
}

std::string rangeLimitLogPath() {
  if (!limitsByPolygon(SgyParams)) return joinPath(fieldText(SgyParams.listParams.dir), kLogName);
  PolyParams& params = SgyParams.polyParams;
  if (params.type == PS_TYPED) {
    DIRECTORY here{};
    xvt_fsys_get_dir(&here);
    copyText(params.dir, fieldText(here.path));
    return joinPath(fieldText(here.path), kLogName);
  }
  return joinPath(fieldText(params.dir), kLogName);
}

int initPolygon() {
  PolyParams& params = SgyParams.polyParams;
  RangePolygon.clear();
  std::string source;
  if (params.type == PS_TYPED) {
    useTypedPoints(params);
  } else {
    source = polygonPath();
    if (!readPolygonFile(source, &RangePolygon)) return 0;
    params.numPoints = static_cast<int>(RangePolygon.size());
  }
  closePolygon();
  return openLog(source) ? 1 : 0;
}

int initPointsList() {
  const ListParams& params = SgyParams.listParams;
  logBlank();
  console_out(params.listType == LS_INCLUSION ? "Initializing inclusion list..." : "Initializing exclusion list...");
  logBlank();
  const std::string path = listPath();
  if (!readListFile(path, params.useSec, &PointsList)) return 0;
  ControlPoints = static_cast<int>(PointsList.size());
  segySort(reinterpret_cast<char*>(PointsList.data()), ControlPoints, sizeof(RangeItem));
  return openLog(path) ? 1 : 0;
}

void endRangeLimit() {
  if (LogFile && !closeFile(LogFile)) stopLogging();
  RangePolygon = {};
  PointsList = {};
  ControlPoints = 0;
}

int traceInRange(const char* trace) {
  if (!SgyParams.rangeLimit) return 1;
  Primary = primaryLimitKey(SgyParams).in(trace);
  Secondary = limitHasSecondary(SgyParams) ? secondaryLimitKey(SgyParams).in(trace) : 0.0;
  const bool byPolygon = limitsByPolygon(SgyParams);
  const bool inside = byPolygon ? inPolygon() : pointInList() != 0;
  const int sense = byPolygon ? SgyParams.polyParams.polyType : SgyParams.listParams.listType;
  if (inside == (sense == LS_EXCLUSION)) return 0;
  if (LogFile) logTrace();
  widenRange();
  return 1;
}

int pointInList() {
  int low = 0;
  int high = ControlPoints - 1;
  while (low <= high) {
    const int middle = low + (high - low) / 2;
    const RangeItem& entry = PointsList[static_cast<std::size_t>(middle)];
    if (entry.primary == Primary && entry.secondary == Secondary) return 1;
    if (entry.primary < Primary || (entry.primary == Primary && entry.secondary < Secondary))
      low = middle + 1;
    else
      high = middle - 1;
  }
  return 0;
}
