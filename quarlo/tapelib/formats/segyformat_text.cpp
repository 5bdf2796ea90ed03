#include "quarlo/tapelib/formats/segyformat_text.h"

#include <algorithm>
#include <map>
#include <optional>

#include "libkyr/text.h"
#include "quarlo/tapelib/formats/segyformat_keys.h"

namespace {

using segytext::fieldSettings;
using segytext::formatSettings;
using segytext::kReadable;
using segytext::kSignature;
using segytext::numberIn;
using segytext::Setting;
using segytext::takeNumber;
using segytext::takeValue;
using segytext::typeOfName;

constexpr std::size_t kMaxFaults = 100;

std::vector<std::string_view> wordsOf(std::string_view text) {
  std::vector<std::string_view> words;
  for (text = trimText(text); !text.empty(); text = trimText(text)) {
    const std::size_t end = std::min(text.find_first_of(" \t"), text.size());
    words.push_back(text.substr(0, end));
    text.remove_prefix(end);
  }
  return words;
}

template <std::size_t N>
bool takeNumbers(std::string_view text, int (&numbers)[N], int* count) {
  const auto words = wordsOf(text);
  if (words.size() > N) return false;
  for (std::size_t i = 0; i < words.size(); ++i)
    if (!takeNumber(words[i], &numbers[i])) return false;
  *count = static_cast<int>(words.size());
  return true;
}

bool takePath(std::string_view path, FILE_SPEC* file) {
  const std::size_t slash = path.rfind('/');
  const std::size_t start = slash == std::string_view::npos ? 0 : slash + 1;
  // The root's own slash is its whole name.
  const std::string_view directory = path.substr(0, slash == 0 ? 1 : start == 0 ? 0 : slash);
  return start < path.size() && copyText(file->dir.path, directory) && copyText(file->name, path.substr(start));
}

std::string inQuotes(std::string_view text) { return '"' + std::string(text) + '"'; }

// ---- reading ----------------------------------------------------------------------------------------------------

/// Values that can only be read when their field's type is known.
struct TypedValue {
  int line;
  std::string_view key, text;
  std::vector<FieldValue*> places;
};

class Reader {
 public:
  explicit Reader(SegyFormat* target) : format_(*target) {}

  std::vector<SegyTextFault> read(std::string_view text);

 private:
  void readLine(std::string_view line);
  void readSignature(std::string_view line);
  void readSection(std::string_view line);
  void readSetting(std::string_view line);
  void readFormatValue(std::string_view key, std::string_view value);
  void readFieldValue(std::string_view key, std::string_view value);
  void readProperties(std::string_view key, std::string_view value);
  void readTyped(const TypedValue& typed);
  void endSection();
  void endFormat();

  template <typename Record>
  bool readFrom(std::span<const Setting<Record>> settings, std::string_view key, std::string_view value,
                Record* record);
  void require(bool holds, std::string_view key, const char* what) {
    if (!holds) fault(inQuotes(key) + ' ' + what);
  }
  void fault(const std::string& text) { faultAt(lineNumber_, text); }
  void faultAt(int line, const std::string& text) {
    if (faults_.size() < kMaxFaults) faults_.push_back({line, text});
  }

  SegyFormat& format_;
  std::vector<SegyTextFault> faults_;
  int lineNumber_ = 0;
  bool hasSignature_ = false;
  std::map<std::string_view, int> keys_;  // of the section, with their lines
  int sectionLine_ = 0;                   // 0 before the first field
  bool isBinary_ = false;
  bool isKept_ = false;  // the section's head was sound
  SegyField field_;
  std::vector<TypedValue> typedValues_;
};

std::vector<SegyTextFault> Reader::read(std::string_view text) {
  format_ = SegyFormat{};
  if (text.size() > kMaxSegyTextBytes) {
    fault(formatText("the text is longer than %zu bytes", kMaxSegyTextBytes));
    return faults_;
  }
  for (std::size_t start = 0; start < text.size() && faults_.size() < kMaxFaults;) {
    const std::size_t end = std::min(text.find('\n', start), text.size());
    ++lineNumber_;
    readLine(trimText(text.substr(start, end - start)));
    if (!hasSignature_) return faults_;
    start = end + 1;
  }
  if (!hasSignature_) readSignature("");
  endSection();
  return faults_;
}

void Reader::readLine(std::string_view line) {
  const auto isControl = [](char c) { return (static_cast<unsigned char>(c) < ' ' && c != '\t') || c == 127; };
  if (!hasSignature_)
    readSignature(line);
  else if (std::ranges::any_of(line, isControl))
    fault("a character that is no text");
  else if (line.starts_with('['))
    readSection(line);
  else if (!line.empty() && !line.starts_with('#'))
    readSetting(line);
}

void Reader::readSignature(std::string_view line) {
  const std::size_t middle = line.find(kReadable);
  int oldest = 0;
  if (!line.starts_with(kSignature) || middle == std::string_view::npos || middle < kSignature.size() ||
      !takeNumber(line.substr(kSignature.size(), middle - kSignature.size()), &format_.itsVersion) ||
      !takeNumber(line.substr(middle + kReadable.size()), &oldest) || oldest < 1 || format_.itsVersion < oldest)
    return fault("no SEG Y format description: the first line must read " +
                 inQuotes(formatText("%s%d%s%d", std::string(kSignature).c_str(), kSegyTextVersion,
                                     std::string(kReadable).c_str(), kSegyTextReadableFrom)));
  if (oldest > kSegyTextVersion)
    return fault(formatText("written in version %d, which this program cannot read", format_.itsVersion));
  hasSignature_ = true;
}

void Reader::readSection(std::string_view line) {
  endSection();
  sectionLine_ = lineNumber_;
  keys_.clear();
  typedValues_.clear();
  field_ = SegyField{};
  isBinary_ = line.starts_with("[binary ");
  isKept_ = false;
  if ((!isBinary_ && !line.starts_with("[trace ")) || !line.ends_with(']'))
    return fault("a section is [binary NAME] or [trace NAME]");
  const std::size_t start = line.find(' ');
  const std::string_view name = trimText(line.substr(start, line.size() - 1 - start));
  if (name.empty() || name.find(']') != std::string_view::npos || !copyText(field_.itsName, name))
    return fault(inQuotes(name) + formatText(" is no name of 1 to %zu characters", sizeof field_.itsName - 1));
  if (getField(isBinary_ ? format_.itsBinaryFields : format_.itsTraceFields, field_.itsName) != nullptr)
    return fault("a second field " + inQuotes(name) + (isBinary_ ? " of the binary header" : " of the trace header"));
  if ((isBinary_ ? format_.itsBinaryCount : format_.itsTraceCount) >= kMaxSegyFields)
    return fault(formatText("more than %d fields", kMaxSegyFields));
  isKept_ = true;
}

void Reader::readSetting(std::string_view line) {
  const std::size_t equals = line.find('=');
  if (equals == std::string_view::npos) return fault("neither KEY = VALUE nor a section");
  const std::string_view key = trimText(line.substr(0, equals));
  const std::string_view value = trimText(line.substr(equals + 1));
  if (!keys_.emplace(key, lineNumber_).second) return fault(inQuotes(key) + " is given twice");
  sectionLine_ == 0 ? readFormatValue(key, value) : readFieldValue(key, value);
}

template <typename Record>
bool Reader::readFrom(std::span<const Setting<Record>> settings, std::string_view key, std::string_view value,
                      Record* record) {
  const auto found = std::ranges::find(settings, key, &Setting<Record>::key);
  if (found == settings.end()) return false;
  if (found->isFlag) {
    require(value == "yes" || value == "no", key, "must be yes or no");
    found->set(record, value == "yes" ? 1 : 0);
    return true;
  }
  const std::optional<int> number = numberIn<int>(value);
  if (number && *number >= found->low && *number <= found->high)
    found->set(record, *number);
  else
    fault(inQuotes(key) + formatText(" must be a whole number from %d to %d", found->low, found->high));
  return true;
}

void Reader::readFormatValue(std::string_view key, std::string_view value) {
  int types = 0;
  if (key == "name")
    require(copyText(format_.itsName, value), key, "has at most 256 characters");
  else if (key == "reel-header-file")
    require(takePath(value, &format_.itsTextFileSpec), key, "must be the path of a file");
  else if (key == "trace-types")
    require(takeNumbers(value, format_.itsTraceTypes, &types) && types == 3, key, "must be three whole numbers");
  else if (!readFrom(formatSettings(), key, value, &format_))
    fault("unknown key " + inQuotes(key));
}

void Reader::readFieldValue(std::string_view key, std::string_view value) {
  if (key == "description") {
    require(copyText(field_.itsDescription, value), key, "has at most 63 characters");
  } else if (key == "type") {
    const int type = typeOfName(value);
    require(type != 0, key, "must be int8 to int64, uint8 to uint64, float32 or float64");
    if (type != 0) field_.itsType = static_cast<KyrType>(type);
  } else if (key == "byte") {
    const std::optional<int> place = numberIn<int>(value);
    require(place && *place >= -kMaxSegyHeaderBytes && *place <= kMaxSegyHeaderBytes, key,
            "must be a place in the header, the first byte being 1");
    field_.itsOffset = place.value_or(1) - 1;
  } else if (key == "scale-field") {
    require(copyText(field_.itsScaleField, value), key, "has at most 63 characters");
  } else if (key == "replaces") {
    require(copyText(field_.itsReplaced, value), key, "has at most 63 characters");
  } else if (key == "scale") {
    require(takeNumber(value, &field_.itsScaleFactor), key, "must be a number");
  } else if (key == "override") {
    typedValues_.push_back({lineNumber_, key, value, {&field_.itsOverrideValue}});
    field_.itIsOverridden = 1;
  } else if (key == "range") {
    typedValues_.push_back({lineNumber_, key, value, {&field_.itsRangeMin, &field_.itsRangeMax}});
    field_.itHasRange = 1;
  } else if (key == "input-property" || key == "output-properties") {
    readProperties(key, value);
  } else if (!readFrom(fieldSettings(), key, value, &field_)) {
    fault("unknown key " + inQuotes(key));
  }
}

void Reader::readProperties(std::string_view key, std::string_view value) {
  int properties[kMaxOutputProperties] = {};
  int count = 0;
  const bool isInput = key == "input-property";
  const bool sound = takeNumbers(value, properties, &count) && (!isInput || count == 1);
  if (!sound || std::ranges::any_of(properties, [](int property) { return property < 0; }))
    return fault(inQuotes(key) + (isInput ? " must be the number of a trace property"
                                          : " must be at most 42 numbers of trace properties"));
  if (isInput) {
    field_.inputKyrHeader = static_cast<TraceProperty>(properties[0]);
    return;
  }
  field_.kyrHeaderCount = count;
  std::ranges::transform(properties, field_.outputKyrHeader,
                         [](int property) { return static_cast<TraceProperty>(property); });
}

void Reader::readTyped(const TypedValue& typed) {
  const auto words = wordsOf(typed.text);
  bool sound = words.size() == typed.places.size();
  for (std::size_t i = 0; sound && i < words.size(); ++i) sound = takeValue(words[i], field_.itsType, typed.places[i]);
  if (!sound)
    faultAt(typed.line, inQuotes(typed.key) + formatText(" must be %zu number%s of the field's type",
                                                         typed.places.size(), typed.places.size() > 1 ? "s" : ""));
  else if (words.size() == 2 && numberIn<double>(words[0]) > numberIn<double>(words[1]))
    faultAt(typed.line, inQuotes(typed.key) + " has its minimum above its maximum");
}

void Reader::endSection() {
  if (sectionLine_ == 0) return endFormat();
  if (!isKept_) return;
  for (const char* key : {"type", "byte"})
    if (!keys_.contains(key))
      faultAt(sectionLine_, "field " + inQuotes(fieldText(field_.itsName)) + " has no " + inQuotes(key));
  if (keys_.contains("type"))
    std::ranges::for_each(typedValues_, [this](const TypedValue& typed) { readTyped(typed); });
  addSegyField(&format_, isBinary_, field_);
}

void Reader::endFormat() {
  struct Header {
    const char* key;
    bool isThere;
    int bytes;
  };
  const Header headers[] = {{"reel-header", format_.itHasReelHeader != 0, format_.itsReelBytes},
                            {"binary-header", format_.itHasBinaryHeader != 0, format_.itsBinaryBytes},
                            {"trace-header", format_.itHasTraceHeader != 0, format_.itsTraceBytes}};
  for (const Header& header : headers)
    if (header.isThere && header.bytes == 0)
      faultAt(keys_[header.key],
              inQuotes(header.key) + " needs " + inQuotes(std::string(header.key) + "-bytes") + " of 1 or more");
  if (format_.itUsesTextFile != 0 && format_.itsTextFileSpec.name[0] == '\0')
    faultAt(keys_["reel-header-from-file"], "\"reel-header-from-file\" needs \"reel-header-file\"");
}

}  // namespace

std::vector<SegyTextFault> parseSegyFormat(std::string_view text, SegyFormat* format) {
  std::vector<SegyTextFault> faults = Reader(format).read(text);
  // What is missing is noticed at the end of its section.
  std::ranges::stable_sort(faults, {}, &SegyTextFault::line);
  return faults;
}
