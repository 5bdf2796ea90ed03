// kyrtool: shows, makes and marks datasets without the program's windows.
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "libkyr/byteorder.h"
#include "libkyr/datasets.h"
#include "libkyr/files.h"
#include "libkyr/output.h"
#include "libkyr/text.h"
#include "tools/kyrtext.h"
#include "tools/newdataset.h"
#include "tools/recordings.h"

namespace {

using Arguments = std::vector<std::string>;

constexpr const char* kUsage =
    "usage: kyrtool info DATASET                          type, state, counts and properties\n"
    "       kyrtool check DATASET                         reads every trace; counts live, dead and lost ones\n"
    "       kyrtool headers DATASET [RECORD [TRACE]]      trace headers as text\n"
    "       kyrtool dump DATASET [RECORD [TRACE]]         headers and samples as text\n"
    "       kyrtool make DATASET TEXT                     a dataset from such text (- for standard input)\n"
    "       kyrtool record DATASET TEXT                   a test recording: signals as a text tells them\n"
    "       kyrtool raw DATASET FLOATS RECORDS TRACES SAMPLES SECONDS [TYPE]\n"
    "                                                     a dataset from little-endian 32-bit floats\n"
    "       kyrtool set DATASET RECORD TRACE NAME=VALUE...  sets trace properties\n"
    "       kyrtool kill DATASET RECORD TRACE [geometry|processing|other]\n"
    "       kyrtool revive DATASET RECORD TRACE           takes the kill flags away\n"
    "       kyrtool property DATASET NAME=VALUE...        sets properties of the dataset\n"
    "       RECORD and TRACE: a number, a range such as 3-8, or all\n"
    "       TYPE: unstacked, stack-2d, stack-3d, unknown, radar\n";

constexpr int kDone = 0;
constexpr int kDataProblem = 1;
constexpr int kFailure = 2;

int complain(const std::string& what) {
  std::fprintf(stderr, "kyrtool: %s\n", what.c_str());
  return kFailure;
}

void say(const std::string& line) { std::fprintf(stderr, "kyrtool: %s\n", std::string(trimText(line)).c_str()); }

struct Range {
  int first = 1;
  int last = 0;
};

std::optional<Range> parseRange(const std::string& text, int count) {
  if (text == "all") return Range{1, count};
  const std::size_t dash = text.find('-');
  const auto first = kyrtext::parseInt(text.substr(0, dash));
  const auto last = dash == std::string::npos ? first : kyrtext::parseInt(text.substr(dash + 1));
  if (!first || !last || *first < 1 || *last < *first || *last > count) return std::nullopt;
  return Range{*first, *last};
}

/// The records and traces that arguments name from `at` on; all of them where there are none.
struct Selection {
  Range records;
  Range traces;
};

std::optional<Selection> parseSelection(const Arguments& arguments, std::size_t at, const DatasetShape& shape) {
  const auto records = parseRange(arguments.size() > at ? arguments[at] : "all", shape.records);
  const auto traces = parseRange(arguments.size() > at + 1 ? arguments[at + 1] : "all", shape.tracesPerRecord);
  if (!records || !traces) return std::nullopt;
  return Selection{*records, *traces};
}

/// Does something for every selected trace. @return the first result that is not `done`
int forEach(const Selection& selection, const std::function<int(int record, int trace)>& work) {
  for (int record = selection.records.first; record <= selection.records.last; ++record)
    for (int trace = selection.traces.first; trace <= selection.traces.last; ++trace)
      if (const int result = work(record, trace); result != kDone) return result;
  return kDone;
}

int openFailed(const std::string& path, int result) { return complain(path + ": " + kyrtext::reason(result)); }

// ---- showing ------------------------------------------------------------------------------------------------------

int info(const Arguments& arguments) {
  DatasetFile file(arguments[0], say);
  if (const int result = file.openRead(); result != kyrOk) return openFailed(arguments[0], result);
  std::cout << "state " << (file.isWhole() ? "closed properly" : "not complete") << "\n"
            << "files " << file.shape().parts() << "\n"
            << "bytes-per-trace " << file.shape().slotSize() << "\n";
  kyrtext::writeHead(std::cout, file);
  return file.isWhole() ? kDone : kDataProblem;
}

int check(const Arguments& arguments) {
  DatasetFile file(arguments[0], say);
  if (const int result = file.openRead(); result != kyrOk) return openFailed(arguments[0], result);
  std::vector<float> samples(static_cast<std::size_t>(file.shape().samples));
  long live = 0;
  long dead = 0;
  long unwritten = 0;
  long lost = 0;
  forEach(*parseSelection({}, 0, file.shape()), [&](int record, int trace) {
    TraceInfo header{};
    const int result = file.read(record, trace, samples.data(), &header);
    ++(result != kyrOk                                ? lost
       : !IsDead(header)                              ? live
       : header.words[trKillFlag] == killNeverWritten ? unwritten
                                                      : dead);
    return kDone;
  });
  std::printf("live %ld\ndead %ld\nnever-written %ld\nlost %ld\n", live, dead, unwritten, lost);
  return lost == 0 && file.isWhole() ? kDone : kDataProblem;
}

int show(const Arguments& arguments, bool withSamples) {
  DatasetFile file(arguments[0], say);
  if (const int result = file.openRead(); result != kyrOk) return openFailed(arguments[0], result);
  const auto selection = parseSelection(arguments, 1, file.shape());
  if (!selection) return complain("no such record or trace");
  std::vector<float> samples(static_cast<std::size_t>(file.shape().samples));
  kyrtext::writeHead(std::cout, file);
  bool lost = false;
  const auto showTrace = [&](int record, int trace) {
    TraceInfo header{};
    const int result = file.read(record, trace, withSamples ? samples.data() : nullptr, &header);
    if (result != kyrOk)
      std::cout << "# trace " << record << " " << trace << " is lost\n";
    else if (header.words[trKillFlag] == killNeverWritten)
      std::cout << "# trace " << record << " " << trace << " was never written\n";
    else
      kyrtext::writeTrace(std::cout, record, trace, header, withSamples ? samples.data() : nullptr,
                          file.shape().samples);
    lost = lost || result != kyrOk;
    return kDone;
  };
  forEach(*selection, showTrace);
  return lost || !file.isWhole() ? kDataProblem : kDone;
}

int headers(const Arguments& arguments) { return show(arguments, false); }
int dump(const Arguments& arguments) { return show(arguments, true); }

// ---- making -------------------------------------------------------------------------------------------------------

bool mayCreate(const std::string& path) {
  std::error_code ignored;
  // Of whatever kind, a link to nothing too: nothing that was there is written over.
  if (std::filesystem::symlink_status(path, ignored).type() == std::filesystem::file_type::not_found) return true;
  complain(path + ": exists already");
  return false;
}

int makeOfText(const Arguments& arguments, decltype(kyrtext::make)& maker) {
  if (!mayCreate(arguments[0])) return kFailure;
  std::ifstream text;
  if (arguments[1] != "-") text.open(arguments[1]);
  if (!text) return complain(arguments[1] + ": cannot be read");
  const std::string problem = maker(arguments[1] == "-" ? std::cin : text, arguments[1], arguments[0], say);
  return problem.empty() ? kDone : complain(problem);
}

int make(const Arguments& arguments) { return makeOfText(arguments, kyrtext::make); }
int record(const Arguments& arguments) { return makeOfText(arguments, recordings::make); }

/// Fills a dataset trace by trace with raw floats.
int copyRaw(std::FILE* in, const std::string& name, DatasetFile& file) {
  const DatasetShape& shape = file.shape();
  std::vector<unsigned char> bytes(4 * static_cast<std::size_t>(shape.samples));
  std::vector<float> samples(static_cast<std::size_t>(shape.samples));
  int number = 0;
  return forEach({{1, shape.records}, {1, shape.tracesPerRecord}}, [&](int record, int trace) {
    if (std::fread(bytes.data(), 1, bytes.size(), in) != bytes.size())
      return complain(std::ferror(in) != 0
                          ? name + ": cannot be read"
                          : name + formatText(": too few floats for trace %d of record %d", trace, record));
    for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = loadLeFloat(bytes.data() + 4 * i);
    TraceInfo header{};
    ++number;
    SetTraceProperty(trFieldFile, longIntType, gUnknownUnits, &record, &header);
    SetTraceProperty(trChannel, longIntType, gUnknownUnits, &trace, &header);
    SetTraceProperty(trTraceNumber, longIntType, gUnknownUnits, &number, &header);
    const int result = file.write(record, trace, samples.data(), header);
    return result == kyrOk ? kDone : complain(file.path() + ": cannot be written");
  });
}

int fillRaw(std::FILE* in, DatasetFile& file, const Arguments& arguments) {
  const auto type = kyrtext::typeOf(arguments.size() > 6 ? arguments[6] : "unstacked");
  if (!type) return complain("no such type: " + arguments[6]);
  int result = file.announce(*type, 0, 0);
  if (result != kyrOk) return openFailed(arguments[0], result);
  constexpr const char* kNames[] = {"records", "traces-per-record", "samples", "sample-interval"};
  for (std::size_t i = 0; i < 4; ++i) {
    const std::string problem = kyrtext::setDataset(file, std::string(kNames[i]) + "=" + arguments[2 + i]);
    if (!problem.empty()) return complain(problem);
  }
  result = file.begin();
  if (result != kyrOk) return kFailure;
  if (const int copied = copyRaw(in, arguments[1], file); copied != kDone) return copied;
  return std::fgetc(in) == EOF ? kDone : complain(arguments[1] + ": holds more floats than that");
}

int raw(const Arguments& arguments) {
  if (!mayCreate(arguments[0])) return kFailure;
  const bool standard = arguments[1] == "-";
  const FileHandle opened = standard ? FileHandle() : openFile(arguments[1].c_str(), "rb");
  if (!standard && !opened) return complain(arguments[1] + ": cannot be read");
  NewDataset made(arguments[0], say);
  const int result = fillRaw(standard ? stdin : opened.get(), made.file, arguments);
  return result != kDone || made.keep() ? result : kFailure;
}

// ---- changing -----------------------------------------------------------------------------------------------------

/// Changes the headers of the traces that the second and third argument select.
int changeHeaders(const Arguments& arguments, const std::function<std::string(TraceInfo&)>& change) {
  DatasetFile file(arguments[0], say);
  if (const int result = file.openUpdate(); result != kyrOk) return openFailed(arguments[0], result);
  const auto selection = parseSelection(arguments, 1, file.shape());
  if (!selection) return complain("no such record or trace");
  std::vector<float> samples(static_cast<std::size_t>(file.shape().samples));
  const int result = forEach(*selection, [&](int record, int trace) {
    TraceInfo header{};
    int status = file.read(record, trace, samples.data(), &header);
    if (status == kyrOk) {
      if (const std::string problem = change(header); !problem.empty()) return complain(problem);
      status = file.write(record, trace, samples.data(), header);
    }
    return status == kyrOk ? kDone : complain(formatText("trace %d of record %d cannot be changed", trace, record));
  });
  const int closed = file.close();
  return result == kDone && closed != kyrOk ? kFailure : result;
}

std::string setAll(TraceInfo& header, const Arguments& arguments) {
  std::string problem;
  for (std::size_t i = 3; i < arguments.size() && problem.empty(); ++i)
    problem = kyrtext::setTrace(header, arguments[i]);
  return problem;
}

int set(const Arguments& arguments) {
  TraceInfo scratch{};  // what makes no sense is refused before anything is changed
  if (const std::string problem = setAll(scratch, arguments); !problem.empty()) return complain(problem);
  return changeHeaders(arguments, [&](TraceInfo& header) {
    // From here on somebody wrote this trace; its zeros are no data all the same.
    if (header.words[trKillFlag] == killNeverWritten) header.words[trKillFlag] = killOther;
    return setAll(header, arguments);
  });
}

int setKillFlag(const Arguments& arguments, int flag) {
  return changeHeaders(
      arguments,
      [flag](TraceInfo& header) {
        SetTraceProperty(trKillFlag, longIntType, gUnknownUnits, &flag, &header);
        return std::string();
      });
}

int kill(const Arguments& arguments) {
  const std::string kind = arguments.size() > 3 ? arguments[3] : "other";
  if (kind == "geometry") return setKillFlag(arguments, killGeometry);
  if (kind == "processing") return setKillFlag(arguments, killProcessing);
  return kind == "other" ? setKillFlag(arguments, killOther) : complain("no such kind of kill: " + kind);
}

int revive(const Arguments& arguments) { return setKillFlag(arguments, 0); }

int property(const Arguments& arguments) {
  for (std::size_t i = 1; i < arguments.size(); ++i)
    if (const std::string problem = kyrtext::checkDataset(arguments[i]); !problem.empty()) return complain(problem);
  DatasetFile file(arguments[0], say);
  if (const int result = file.openUpdate(); result != kyrOk) return openFailed(arguments[0], result);
  for (std::size_t i = 1; i < arguments.size(); ++i) {
    const std::string problem = kyrtext::setDataset(file, arguments[i]);
    if (!problem.empty()) return complain(problem);
  }
  return file.close() == kyrOk ? kDone : kFailure;
}

struct Verb {
  const char* name;
  std::size_t fewest;
  std::size_t most;
  int (*run)(const Arguments&);
};

constexpr std::size_t kMany = 1000;
constexpr Verb kVerbs[] = {
    {"info", 1, 1, info},
    {"check", 1, 1, check},
    {"headers", 1, 3, headers},
    {"dump", 1, 3, dump},
    {"make", 2, 2, make},
    {"record", 2, 2, record},
    {"raw", 6, 7, raw},
    {"set", 4, kMany, set},
    {"kill", 3, 4, kill},
    {"revive", 3, 3, revive},
    {"property", 2, kMany, property},
};

/// Runs a verb to its end: want of memory is a line as any other failure.
int run(const Verb& verb, const Arguments& arguments) {
  try {
    return verb.run(arguments);
  } catch (const std::bad_alloc&) {
    return complain(arguments[0] + ": not enough memory");
  } catch (const std::exception& error) {
    return complain(arguments[0] + ": " + error.what());
  }
}

}  // namespace

int main(int argc, char** argv) {
  // A file that grew to its limit is a failed write, not the end of the program without a word.
  std::signal(SIGXFSZ, SIG_IGN);
  const std::string name = argc > 1 ? argv[1] : "";
  const Arguments arguments(argv + std::min(argc, 2), argv + argc);
  for (const Verb& verb : kVerbs)
    if (name == verb.name && arguments.size() >= verb.fewest && arguments.size() <= verb.most) {
      errno = 0;
      return endOfOutput("kyrtool", run(verb, arguments), kFailure);
    }
  std::fputs(kUsage, stderr);
  return kFailure;
}
