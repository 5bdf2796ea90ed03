#include "tools/recordings.h"

#include <algorithm>
#include <cmath>
#include <istream>
#include <limits>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "libkyr/datasets.h"
#include "libkyr/text.h"
#include "tools/kyrtext.h"
#include "tools/newdataset.h"
#include "tools/signals.h"

namespace recordings {

namespace {

constexpr int kMaxRecords = 1000000;
constexpr int kMaxPairedRecords = 1000;  // 2 to the 500th volts, which a double holds with ease
constexpr float kMaxDecibels = 1000;

struct TraceRange {
  int first;
  int last;
  int step;

  bool holds(int trace) const { return trace >= first && trace <= last && (trace - first) % step == 0; }
};

/// What one line gives to some traces of a record.
struct Part {
  std::vector<TraceRange> traces{};
  std::optional<Signal> signal{};
  std::vector<std::string> properties{};  ///< NAME=VALUE

  bool concerns(int trace) const {
    return std::ranges::any_of(
        traces, [trace](const TraceRange& range) { return range.holds(trace); });
  }
};

/// Records of consecutive field files that hold the same at levels of their own.
struct RecordGroup {
  int firstFile = 0;
  int count = 0;
  double level = 1;
  double pairFactor = 0;  ///< level from pair to pair of records, the second of a pair being negative; 0: no pairs
  std::vector<Part> parts{};

  double levelOf(int index) const {
    if (pairFactor == 0) return level;
    return (index % 2 == 0 ? 1 : -1) * std::pow(pairFactor, index / 2);
  }
};

struct Recording {
  int traces = 0;
  int samples = 0;
  float interval = 0;
  int records = 0;
  std::vector<RecordGroup> groups{};
};

// ---- reading ------------------------------------------------------------------------------------------------------

struct ShapeWord {
  std::string_view name;
  Shape shape;
  const char* place;    ///< what its second number is; null for none
  const char* options;  ///< those that it knows
};
constexpr ShapeWord kShapes[] = {
    {"sine", Shape::Sine, "frequency", "down phase harmonics"},
    {"square", Shape::Square, "frequency", "down phase"},
    {"dc", Shape::Dc, nullptr, "down"},
    {"noise", Shape::Noise, nullptr, "down seed"},
    {"impulse", Shape::Impulse, "sample", "down"},
};

/// Thrown for what a text has wrong, and caught where its lines are counted.
using Wrong = std::invalid_argument;

int wholeNumber(const std::string& word, const std::string& what) {
  const auto value = kyrtext::parseInt(word);
  if (!value) throw Wrong("no " + what + ": " + word);
  return *value;
}

int atLeastOne(const std::string& word, const std::string& what) {
  const int value = wholeNumber(word, what);
  if (value < 1) throw Wrong("no " + what + ": " + word);
  return value;
}

float number(const std::string& word, const std::string& what) {
  const auto value = kyrtext::parseFloat(word);
  if (!value || !std::isfinite(*value)) throw Wrong("no " + what + ": " + word);
  return *value;
}

/// A level's factor.
double decibels(const std::string& word) {
  const float value = number(word, "dB");
  if (std::abs(value) > kMaxDecibels) throw Wrong("no dB: " + word);
  return std::pow(10.0, double{value} / 20);
}

/// The next word; an empty one at the line's end.
std::string next(std::istream& words) {
  std::string word;
  words >> word;
  return word;
}

/// "7", "2-8", "1-48/2"
TraceRange parseRange(const std::string& text, int traces) {
  const std::size_t slash = std::min(text.find('/'), text.size());
  const std::size_t dash = std::min(text.find('-'), slash);
  const auto first = kyrtext::parseInt(text.substr(0, dash));
  const auto last = dash == slash ? first : kyrtext::parseInt(text.substr(dash + 1, slash - dash - 1));
  const auto step = slash == text.size() ? std::optional<int>(1) : kyrtext::parseInt(text.substr(slash + 1));
  if (!first || !last || !step || *first < 1 || *last < *first || *last > traces || *step < 1)
    throw Wrong("no traces of this recording: " + text);
  return {*first, *last, *step};
}

std::vector<TraceRange> parseTraces(const std::string& text, int traces) {
  if (text == "all") return {{1, traces, 1}};
  if (text == "odd") return {{1, traces, 2}};
  if (text == "even") return {{2, traces, 2}};
  std::vector<TraceRange> ranges;
  std::istringstream in(text);
  for (std::string range; std::getline(in, range, ',');) ranges.push_back(parseRange(range, traces));
  return ranges;
}

void takeOption(const std::string& option, std::istream& words, Signal& signal) {
  if (option == "down") signal.level /= decibels(next(words));
  if (option == "phase") signal.phase = number(next(words), "degrees");
  if (option == "seed") signal.seed = static_cast<unsigned>(wholeNumber(next(words), "seed"));
  if (option != "harmonics") return;
  for (std::string word = next(words); !word.empty(); word = next(words))  // up to the line's end
    signal.harmonics.push_back(decibels(word));
}

Signal parseSignal(const ShapeWord& shape, std::istream& words, int samples) {
  Signal signal;
  signal.shape = shape.shape;
  signal.level = number(next(words), "volts");
  if (shape.place != nullptr) signal.place = number(next(words), shape.place);
  if (signal.shape == Shape::Impulse && (signal.place < 1 || signal.place > samples))
    throw Wrong(formatText("no sample of this recording: %g", signal.place));
  for (std::string option = next(words); !option.empty(); option = next(words)) {
    if ((" " + std::string(shape.options) + " ").find(" " + option + " ") == std::string::npos)
      throw Wrong(std::string(shape.name) + " knows no " + option);
    takeOption(option, words, signal);
  }
  return signal;
}

std::string killFlagOf(const std::string& kind) {
  const int flag = kind == "geometry" ? killGeometry : kind == "processing" ? killProcessing : killOther;
  if (flag == killOther && !kind.empty() && kind != "other") throw Wrong("no such kind of kill: " + kind);
  return formatText("kill-flag=%d", flag);
}

std::vector<std::string> parseProperties(std::istream& words) {
  std::vector<std::string> properties;
  TraceInfo scratch{};
  for (std::string word = next(words); !word.empty(); word = next(words)) {
    if (const std::string problem = kyrtext::setTrace(scratch, word); !problem.empty()) throw Wrong(problem);
    properties.push_back(word);
  }
  return properties;
}

/// "901 [level FACTOR]" or "901-909 [halving|doubling]"
RecordGroup parseGroup(std::istream& words) {
  RecordGroup group;
  const std::string files = next(words);
  const std::size_t dash = std::min(files.find('-'), files.size());
  group.firstFile = wholeNumber(files.substr(0, dash), "field file");
  const int last = dash == files.size() ? group.firstFile : wholeNumber(files.substr(dash + 1), "field file");
  const long count = static_cast<long>(last) - group.firstFile + 1;
  const std::string how = next(words);
  if (how == "level") group.level = number(next(words), "level");
  if (how == "halving") group.pairFactor = 0.5;
  if (how == "doubling") group.pairFactor = 2;
  if (!how.empty() && how != "level" && group.pairFactor == 0) throw Wrong("not understood: " + how);
  if (count < 1 || count > (group.pairFactor == 0 ? kMaxRecords : kMaxPairedRecords))
    throw Wrong("no field files: " + files);
  group.count = static_cast<int>(count);
  return group;
}

/// Reads the text line by line: what the recording is, then record after record what its traces hold.
class Reader {
 public:
  /// @return an empty text, or what is wrong
  std::string read(std::istream& in) {
    int lineNumber = 0;
    try {
      for (std::string line; std::getline(in, line);) {
        ++lineNumber;
        take(std::string(trimText(line)));
      }
    } catch (const Wrong& wrong) {
      return formatText("line %d: %s", lineNumber, wrong.what());
    }
    if (in.bad()) return "cannot be read";
    return recording_.groups.empty() ? "no record in the text" : "";
  }

  const Recording& recording() const { return recording_; }

 private:
  void take(const std::string& line) {
    if (line.empty() || line[0] == '#') return;
    std::istringstream words(line);
    const std::string word = next(words);
    if (word == "record")
      takeRecord(words);
    else if (recording_.groups.empty())
      takeCount(word, words);
    else
      recording_.groups.back().parts.push_back(parsePart(word, words));
    if (const std::string rest = next(words); !rest.empty()) throw Wrong("not understood: " + rest);
  }

  void takeCount(const std::string& word, std::istream& words) {
    if (word == "traces")
      recording_.traces = atLeastOne(next(words), word);
    else if (word == "samples")
      recording_.samples = atLeastOne(next(words), word);
    else if (word == "interval")
      recording_.interval = number(next(words), "seconds");
    else
      throw Wrong("not understood: " + word);
  }

  void takeRecord(std::istream& words) {
    if (recording_.traces == 0 || recording_.samples == 0 || recording_.interval <= 0)
      throw Wrong("\"traces\", \"samples\" and \"interval\" have to come first");
    recording_.groups.push_back(parseGroup(words));
    recording_.records += recording_.groups.back().count;
    if (recording_.records > kMaxRecords) throw Wrong(formatText("more than %d records", kMaxRecords));
  }

  Part parsePart(const std::string& traces, std::istream& words) const {
    Part part{.traces = parseTraces(traces, recording_.traces)};
    const std::string word = next(words);
    const auto* const shape = std::ranges::find(kShapes, word, &ShapeWord::name);
    if (shape != std::end(kShapes))
      part.signal = parseSignal(*shape, words, recording_.samples);
    else if (word == "dead")
      part.properties = {killFlagOf(next(words))};
    else if (word == "set")
      part.properties = parseProperties(words);
    else
      throw Wrong("no signal: " + word);
    return part;
  }

  Recording recording_;
};

// ---- writing ------------------------------------------------------------------------------------------------------

/// Writes the traces of a recording one by one. A call answers a KyrResult.
class Writer {
 public:
  Writer(const Recording& recording, DatasetFile& file) : recording_(recording), file_(file) {}

  int writeAll() {
    for (const RecordGroup& group : recording_.groups)
      for (int index = 0; index < group.count; ++index)
        if (const int result = writeRecord(group, index); result != kyrOk) return result;
    return kyrOk;
  }

 private:
  int writeRecord(const RecordGroup& group, int index) {
    ++record_;
    for (int trace = 1; trace <= recording_.traces; ++trace)
      if (const int result = writeTrace(group, index, trace); result != kyrOk) return result;
    return kyrOk;
  }

  int writeTrace(const RecordGroup& group, int index, int trace) {
    TraceInfo header = headerOf(group.firstFile + index, trace);
    sum_.assign(static_cast<std::size_t>(recording_.samples), 0.0);
    const TracePlace place{static_cast<unsigned>(record_), static_cast<unsigned>(trace), recording_.interval};
    for (const Part& part : group.parts) {
      if (!part.concerns(trace)) continue;
      if (part.signal) addSignal(*part.signal, group.levelOf(index), place, sum_);
      for (const std::string& assignment : part.properties) kyrtext::setTrace(header, assignment);
    }
    samples_.resize(sum_.size());
    std::ranges::transform(sum_, samples_.begin(), [](double value) {
      return static_cast<float>(
          std::clamp<double>(value, -std::numeric_limits<float>::max(), std::numeric_limits<float>::max()));
    });
    return file_.write(record_, trace, samples_.data(), header);
  }

  TraceInfo headerOf(int fieldFile, int trace) {
    TraceInfo header{};
    ++number_;
    SetTraceProperty(trFieldFile, longIntType, gUnknownUnits, &fieldFile, &header);
    SetTraceProperty(trChannel, longIntType, gUnknownUnits, &trace, &header);
    SetTraceProperty(trTraceNumber, longIntType, gUnknownUnits, &number_, &header);
    return header;
  }

  const Recording& recording_;
  DatasetFile& file_;
  int record_ = 0;
  int number_ = 0;
  std::vector<double> sum_;
  std::vector<float> samples_;
};

/// Announces the dataset and sets its counts. @return an empty text, or what is wrong
std::string prepare(const Recording& recording, DatasetFile& file) {
  if (const int result = file.announce(kAnySeismicType, 0, 0); result != kyrOk) return kyrtext::reason(result);
  for (const std::string& assignment :
       {formatText("records=%d", recording.records), formatText("traces-per-record=%d", recording.traces),
        formatText("samples=%d", recording.samples),
        formatText("sample-interval=%.9g", static_cast<double>(recording.interval))})
    if (std::string problem = kyrtext::setDataset(file, assignment); !problem.empty()) return problem;
  return file.begin() == kyrOk ? std::string() : std::string("cannot be created");
}

std::string write(const Recording& recording, const std::string& path, const DatasetFile::Say& say) {
  NewDataset made(path, say);
  if (const std::string problem = prepare(recording, made.file); !problem.empty()) return path + ": " + problem;
  const bool written = Writer(recording, made.file).writeAll() == kyrOk && made.keep();
  return written ? std::string() : path + ": cannot be written";
}

}  // namespace

std::string make(std::istream& in, const std::string& name, const std::string& path, const DatasetFile::Say& say) {
  Reader reader;
  if (const std::string problem = reader.read(in); !problem.empty()) return name + ": " + problem;
  return write(reader.recording(), path, say);
}

}  // namespace recordings
