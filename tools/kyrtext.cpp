#include "tools/kyrtext.h"

#include <array>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <istream>
#include <ostream>
#include <sstream>
#include <vector>

#include "libkyr/datasets.h"
#include "libkyr/nullvalue.h"
#include "libkyr/propertyvalue.h"
#include "libkyr/text.h"
#include "tools/newdataset.h"

namespace kyrtext {

namespace {

struct TypeName {
  int type;
  const char* name;
};
constexpr std::array kTypeNames{TypeName{kStackedData, "stack-2d"}, TypeName{kAnyUnknownSeismic, "unknown"},
                                TypeName{kAnySeismicType, "unstacked"}, TypeName{brickedTimeStack, "stack-3d"},
                                TypeName{kRadarData, "radar"}};

using Finder = std::optional<PropertyEntry> (*)(int);

std::optional<PropertyEntry> findProperty(std::span<const PropertyEntry> table, Finder byCode, std::string_view name) {
  for (const PropertyEntry& entry : table)
    if (name == entry.name) return entry;
  const auto code = parseInt(name);
  return code ? byCode(*code) : std::nullopt;
}

struct Assignment {
  PropertyEntry property;
  double value;
};

std::optional<double> parseValue(const PropertyEntry& property, const std::string& text) {
  if (text == "null") return double{kNullFloat};
  if (property.isFloat) return parseFloat(text);
  const auto number = parseInt(text);
  return number && !IsValueNull(*number) ? std::optional<double>(*number) : std::nullopt;
}

/// @param problem receives what is wrong when nothing comes back
std::optional<Assignment> parse(const std::string& text, std::span<const PropertyEntry> table, Finder byCode,
                                std::string& problem) {
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos) {
    problem = "no NAME=VALUE: " + text;
    return std::nullopt;
  }
  const auto property = findProperty(table, byCode, std::string_view(text).substr(0, equals));
  if (!property) {
    problem = "no such property: " + text.substr(0, equals);
    return std::nullopt;
  }
  const std::string value = text.substr(equals + 1);
  const auto number = parseValue(*property, value);
  if (!number) {
    problem = (property->isFloat ? "no number: " : "no whole number: ") + text;
    return std::nullopt;
  }
  return Assignment{*property, *number};
}

/// The shortest text that gives the same float again.
std::string floatText(float value) {
  std::array<char, 32> text{};
  const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() ? std::string(text.data(), end) : std::string("nan");
}

/// @param value as a property call gives it out
std::string valueText(const PropertyEntry& property, double value) {
  if (IsValueNull(value)) return "null";
  return property.isFloat ? floatText(static_cast<float>(value)) : formatText("%.0f", value);
}

}  // namespace

std::optional<int> parseInt(std::string_view text) {
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::optional<float> parseFloat(const std::string& text) {
  char* end = nullptr;
  errno = 0;
  const float value = std::strtof(text.c_str(), &end);
  const bool tooLarge = errno == ERANGE && std::isinf(value);
  if (text.empty() || std::isspace(static_cast<unsigned char>(text[0])) != 0 || *end != '\0' || tooLarge)
    return std::nullopt;
  return value;
}

const char* typeName(int type) {
  for (const TypeName& entry : kTypeNames)
    if (entry.type == type) return entry.name;
  return "strange";
}

std::optional<int> typeOf(std::string_view name) {
  for (const TypeName& entry : kTypeNames)
    if (name == entry.name) return entry.type;
  return std::nullopt;
}

std::string setTrace(TraceInfo& info, const std::string& assignment) {
  std::string problem;
  const auto parsed = parse(assignment, tracePropertyTable(), &traceProperty, problem);
  if (!parsed) return problem;
  if (parsed->property.code == trKillFlag && parsed->value == double{killNeverWritten})
    return assignment + ": said of traces that nobody wrote, cannot be set";
  SetTraceProperty(parsed->property.code, doubleFloatType, gUnknownUnits, &parsed->value, &info);
  return {};
}

std::string setDataset(DatasetFile& file, const std::string& assignment) {
  std::string problem;
  const auto parsed = parse(assignment, datasetPropertyTable(), &datasetProperty, problem);
  if (!parsed) return problem;
  if (parsed->property.code == dsTotalTraces || parsed->property.code == dsLargestRecord)
    return assignment + ": follows from the other counts";
  const int result = file.setProperty(parsed->property.code, doubleFloatType, gUnknownUnits, &parsed->value);
  return result == kyrOk ? std::string() : assignment + ": " + reason(result);
}

std::string checkDataset(const std::string& assignment) {
  std::string problem;
  const auto parsed = parse(assignment, datasetPropertyTable(), &datasetProperty, problem);
  return parsed && isCountProperty(parsed->property.code) ? assignment + ": " + reason(kyrTooLate) : problem;
}

void writeHead(std::ostream& out, const DatasetFile& file) {
  out << "type " << typeName(file.header().type) << "\n";
  for (int code = 0; code < kDatasetPropertyCount; ++code) {
    const auto property = datasetProperty(code);
    if (!property || code == dsTotalTraces || code == dsLargestRecord) continue;
    double value = 0;
    file.getProperty(code, doubleFloatType, gUnknownUnits, &value);
    if (IsValueNull(value) || (property->name == nullptr && value == 0)) continue;
    out << (property->name != nullptr ? property->name : std::to_string(code)) << " " << valueText(*property, value)
        << "\n";
  }
}

void writeTrace(std::ostream& out, int record, int trace, const TraceInfo& info, const float* samples, int count) {
  out << "trace " << record << " " << trace;
  for (int code = 0; code < static_cast<int>(kTraceHeaderWords); ++code) {
    const auto property = traceProperty(code);
    if (!property || info.words[static_cast<std::size_t>(code)] == 0) continue;
    double value = 0;
    GetTraceProperty(code, doubleFloatType, gUnknownUnits, &value, &info);
    out << " " << (property->name != nullptr ? property->name : std::to_string(code)) << "="
        << valueText(*property, value);
  }
  out << "\n";
  for (int i = 0; samples != nullptr && i < count; ++i) out << floatText(samples[i]) << "\n";
}

namespace {

/// Reads a dataset's text line by line: first what the dataset is, then its traces.
class Maker {
 public:
  Maker(std::string name, const std::string& path, const DatasetFile::Say& say)
      : name_(std::move(name)), made_(path, say) {}

  std::string run(std::istream& in) {
    std::string line;
    for (int number = 1; std::getline(in, line); ++number) {
      const std::string problem = take(std::string(trimText(line)));
      if (!problem.empty()) return blamed(formatText("line %d: %s", number, problem.c_str()));
    }
    if (in.bad()) return name_ + ": cannot be read";
    if (std::string problem = finish(); !problem.empty()) return blamed(problem);
    const bool whole = file_.begin() == kyrOk && made_.keep();
    return whole ? std::string() : file_.path() + ": cannot be written";
  }

 private:
  /// A problem of the dataset's file stands for itself; any other is the text's.
  std::string blamed(const std::string& problem) const { return outputFailed_ ? problem : name_ + ": " + problem; }
  std::string outputFailed(const std::string& why) {
    outputFailed_ = true;
    return file_.path() + ": " + why;
  }

  /// The dataset's file is made when its first line has been understood.
  std::string start(int type) {
    const int result = file_.announce(type, 0, 0);
    announced_ = result == kyrOk;
    return announced_ ? std::string() : outputFailed(reason(result));
  }

  std::string take(const std::string& line) {
    if (line.empty() || line[0] == '#') return {};
    if (line.find_first_of(" \t") == std::string::npos) return sample(line);
    std::istringstream words(line);
    std::string word;
    words >> word;
    if (word == "trace") return trace(words);
    std::string value;
    if (begun_ || !(words >> value) || words >> word) return "not understood: " + line;
    if (word == "type") {
      const auto type = typeOf(value);
      if (announced_ || !type) return "no first line with a known type: " + line;
      return start(*type);
    }
    return announced_ ? setDataset(file_, word + "=" + value) : "\"type\" has to come first";
  }

  std::string trace(std::istringstream& words) {
    if (!announced_) return "\"type\" has to come first";
    if (std::string problem = finish(); !problem.empty()) return problem;
    if (!begun_ && file_.begin() != kyrOk) return outputFailed("cannot be created");
    begun_ = true;
    std::string record;
    std::string number;
    words >> record >> number;
    record_ = parseInt(record).value_or(0);
    trace_ = parseInt(number).value_or(0);
    if (record_ < 1 || trace_ < 1) return "no record and trace";
    info_ = {};
    samples_.clear();
    for (std::string assignment; words >> assignment;)
      if (std::string problem = setTrace(info_, assignment); !problem.empty()) return problem;
    return {};
  }

  std::string sample(const std::string& line) {
    const auto value = parseFloat(line);
    if (!value) return "no number: " + line;
    if (trace_ == 0) return "a sample before the first trace";
    if (static_cast<int>(samples_.size()) == file_.shape().samples) return "too many samples";
    samples_.push_back(*value);
    return {};
  }

  /// Writes the trace whose lines have been read; samples that were not given are zeros.
  std::string finish() {
    if (!announced_) return "no dataset in the text";
    if (trace_ == 0) return {};
    samples_.resize(static_cast<std::size_t>(file_.shape().samples));
    const int result = file_.write(record_, trace_, samples_.data(), info_);
    if (result == kyrDiskError) return outputFailed("cannot be written");
    return result == kyrOk ? std::string() : formatText("trace %d %d: %s", record_, trace_, reason(result).c_str());
  }

  std::string name_;
  NewDataset made_;
  DatasetFile& file_ = made_.file;
  bool outputFailed_ = false;
  bool announced_ = false;
  bool begun_ = false;
  int record_ = 0;
  int trace_ = 0;
  TraceInfo info_{};
  std::vector<float> samples_;
};

}  // namespace

std::string make(std::istream& in, const std::string& name, const std::string& path, const DatasetFile::Say& say) {
  Maker maker(name, path, say);
  return maker.run(in);
}

std::string reason(int result) {
  switch (result) {
    case kyrDiskError:
      return errno == EBADMSG ? "its header is damaged" : std::strerror(errno);
    case kyrNotSeismic:
      return "it is no dataset";
    case kyrNoSuchTrace:
      return "no such record or trace";
    case kyrTraceLost:
      return "it is not complete, or damaged";
    case kyrTooLate:
      return "that is fixed";
    case kyrNotTwoD:
      return "its traces are not laid out in records";
    case kyrInUse:
      return "another program writes it";
    case kyrWrongVersion:
      return "it needs a later release";
    default:
      return formatText("refused (%d)", result);
  }
}

}  // namespace kyrtext
