#include "quarlo/index/tracetable.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>

#include "libkyr/kyrtype.h"
#include "libkyr/nullvalue.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/frame/loglines.h"

namespace {

constexpr const char* kHead =
    "record,trace,state,field_file,channel,source_line,source_location,receiver_line,receiver_location,cmp_line,"
    "cmp_location,offset,byte";

/// The columns between the state and the byte.
constexpr struct {
  int property;
  bool isFloat;
} kColumns[] = {{trFieldFile, false},     {trChannel, false},      {trSourceLine, false},
                {trSourceLocation, true}, {trReceiverLine, false}, {trReceiverLocation, true},
                {trCmpLine, false},       {trCmpLocation, true},   {trOffset, true}};

/// A number as no locale changes it, in as few characters as bring it back.
template <typename Number>
void append(std::string* line, Number number) {
  std::array<char, 32> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
  line->append(text.data(), end);
}

/// A place is a whole number for most: 100000 there, not 1e+05.
void appendReal(std::string* line, float number) {
  constexpr float kLargestWhole = 1e15F;
  if (std::fabs(number) < kLargestWhole && number == std::trunc(number))
    append(line, static_cast<std::int64_t>(number));
  else
    append(line, number);
}

void appendProperty(std::string* line, int property, bool isFloat, const TraceInfo& header) {
  int whole = 0;
  float real = 0;
  if (isFloat) {
    GetTraceProperty(property, singleFloatType, gUnknownUnits, &real, &header);
    if (std::isfinite(real) && !IsValueNull(real)) appendReal(line, real);
  } else {
    GetTraceProperty(property, longIntType, gUnknownUnits, &whole, &header);
    if (!IsValueNull(whole)) append(line, whole);
  }
}

}  // namespace

bool TraceTable::begin(const std::string& path) {
  path_ = path;
  stream_ = openFile(path.c_str(), "wb");
  if (!stream_ || !keepFromLockers(stream_.get())) {
    sayIfLocked(path);
    return fail();
  }
  line_ = kHead;
  return put();
}

bool TraceTable::take(int record, int trace, const TraceInfo& header, std::int64_t position) {
  const std::uint32_t flag = IsDead(header) ? header.words[trKillFlag] : 0;
  const bool isKnown = (flag & (killNeverWritten | killUnreadable)) == 0;
  line_.clear();
  append(&line_, record);
  line_ += ',';
  append(&line_, trace);
  line_ += ',';
  if (flag != 0)
    append(&line_, static_cast<int>(flag));
  else
    line_ += "live";
  for (const auto& [property, isFloat] : kColumns) {
    line_ += ',';
    if (isKnown) appendProperty(&line_, property, isFloat, header);
  }
  line_ += ',';
  if (position >= 0) append(&line_, position);
  return put();
}

bool TraceTable::put() {
  line_ += "\r\n";
  return std::fwrite(line_.data(), 1, line_.size(), stream_.get()) == line_.size() || fail();
}

bool TraceTable::finish() { return closeFile(stream_) || fail(); }

bool TraceTable::fail() {
  console_out(diskErrorText(path_, errno).c_str());
  return false;
}
