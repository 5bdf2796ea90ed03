#include "quarlo/arguments.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

#include "libkyr/output.h"
#include "quarlo/openfile.h"
#include "quarlo/readyjobs.h"
#include "xvt/script/script.h"
#include "xvt/script/script_values.h"

namespace {

constexpr int kExitUsage = 2;

constexpr const char* kUsage =
    "usage: quarlo [OPTION ...] [FILE]\n"
    "       quarlo --script FILE [NAME=VALUE ...]\n"
    "       quarlo --job NAME [NAME=VALUE ...]\n"
    "Tape and disk input and output for seismic data. A FILE (.tpf, .tap, .sgy, .segy, .sgd, .segd, .kyr or .idx) is\n"
    "opened in the dialog that is for it.\n"
    "\n"
    "  --script FILE   play a script against the windows; the exit status tells how it went\n"
    "  --headless      play the script without a screen\n"
    "  --jobs          list the ready-made jobs with their variables\n"
    "  --job NAME      play one of them without a screen; the exit status tells how it went\n"
    "  --show          play the job against the windows\n"
    "  --from-menu     work in a folder of its own below the user's data, unless KYRHOME names another\n"
    "  --help          show this text\n"
    "  --version       show the version\n"
    "  -display NAME and the other options of X programs\n"
    "\n"
    "Environment: KYRHOME (working directory), ST_BUFFER (largest tape block, in KiB).";

/// An option of X programs, and whether a value follows it.
struct XOption {
  std::string_view name;
  bool hasValue;
};

constexpr XOption kXOptions[] = {
    {"-background", true},  {"-bg", true},           {"-bd", true},           {"-bordercolor", true},
    {"-bw", true},          {"-borderwidth", true},  {"-display", true},      {"-fg", true},
    {"-foreground", true},  {"-fn", true},           {"-font", true},         {"-geometry", true},
    {"-iconic", false},     {"-name", true},         {"-rv", false},          {"-reverse", false},
    {"+rv", false},         {"-synchronous", false}, {"+synchronous", false}, {"-title", true},
    {"-xnllanguage", true}, {"-xrm", true},          {"-xtsessionID", true},  {"-selectionTimeout", true},
};

int refuse(const char* what, const std::string& argument) {
  std::fprintf(stderr, "quarlo: %s \"%s\" (see quarlo --help)\n", what, argument.c_str());
  return kExitUsage;
}

int show(const char* text) {
  std::puts(text);
  return endOfOutput("quarlo", EXIT_SUCCESS, EXIT_FAILURE);
}

int showJobs() {
  const int status = listJobs() ? EXIT_SUCCESS : EXIT_FAILURE;
  return endOfOutput("quarlo", status, EXIT_FAILURE);
}

/// What the arguments ask for beside the toolkit's options.
struct Request {
  const char* script = nullptr;
  const char* job = nullptr;
  const char* file = nullptr;
  bool fromMenu = false;
  bool headless = false;
  bool shown = false;
  std::vector<std::pair<std::string, std::string>> values;
};

bool takeValue(std::string_view argument, Request* request) {
  const std::size_t sign = argument.find('=');
  if (sign == std::string_view::npos || !xvt::script::isVariableName(argument.substr(0, sign))) return false;
  request->values.emplace_back(argument.substr(0, sign), argument.substr(sign + 1));
  return true;
}

/// Takes the argument at `at` and what belongs to it. @return -1 to go on, else the exit status
int takeArgument(int argc, char** argv, int* at, Request* request) {
  const std::string_view argument = argv[*at];
  const auto* known = std::ranges::find(kXOptions, argument, &XOption::name);
  const bool isX = known != std::end(kXOptions);
  if (argument == "--help") return show(kUsage);
  if (argument == "--version") return show("quarlo " QUARLO_VERSION);
  if (argument == "--jobs") return showJobs();
  if (argument == "--headless" || argument == "--show") {
    (argument == "--show" ? request->shown : request->headless) = true;
    return -1;
  }
  if (argument == "--from-menu") {
    request->fromMenu = true;
    return -1;
  }
  const char** wanted = argument == "--script" ? &request->script : argument == "--job" ? &request->job : nullptr;
  if (wanted == nullptr && !isX) {
    if (takeValue(argument, request)) return -1;
    if (argument.empty() || argument[0] == '-' || argument[0] == '+') return refuse("unknown option", argv[*at]);
    if (request->file != nullptr) return refuse("a second file,", argv[*at]);
    request->file = argv[*at];
    return -1;
  }
  if (wanted == nullptr && !known->hasValue) return -1;
  if (++*at == argc) return refuse(wanted == nullptr ? "no value after" : "no name after", argv[*at - 1]);
  if (wanted != nullptr) *wanted = argv[*at];
  return -1;
}

/// Refuses what does not go together. @return -1 to go on, else the exit status
int judge(const Request& request) {
  const bool job = request.job != nullptr;
  if (job && request.script != nullptr) return refuse("a script cannot be played with the job", request.job);
  if (request.file != nullptr && (job || request.script != nullptr)) return refuse("unknown option", request.file);
  if (request.shown && !job) return refuse("no --job beside", "--show");
  if (job || request.script != nullptr) return -1;
  if (request.headless) return refuse("no --script beside", "--headless");
  return request.values.empty() ? -1 : refuse("no --script or --job has the variable", request.values[0].first);
}

/// Loads the script that opens a file. @return -1 to go on, else the exit status
int loadFile(const char* file) {
  std::error_code unknown;
  const std::string path = std::filesystem::absolute(file, unknown).lexically_normal().string();
  std::string reason;
  const XVT_SCRIPT script{openingScript(path, &reason), {{"input", path}}, {}, std::string("quarlo: ") + file};
  if (!script.path.empty()) return xvt_script_load(script) ? -1 : kExitUsage;
  std::fprintf(stderr, "quarlo: %s: %s\n", file, reason.c_str());
  return kExitUsage;
}

/// Loads the script, the job or the file that was asked for. @return -1 to go on, else the exit status
int load(const Request& request) {
  const int status = judge(request);
  if (status < 0 && request.file != nullptr) return loadFile(request.file);
  if (status >= 0 || (request.script == nullptr && request.job == nullptr)) return status;
  XVT_SCRIPT script{request.script != nullptr ? request.script : "", request.values, jobFolders(), ""};
  if (request.job != nullptr) {
    script.path = jobFile(request.job);
    script.speaker = std::string("quarlo: ") + request.job;
  }
  if (script.path.empty()) {
    std::fprintf(stderr, "quarlo: there is no job \"%s\"; there are %s (see quarlo --jobs)\n", request.job,
                 jobNames().c_str());
    return kExitUsage;
  }
  return xvt_script_load(script) ? -1 : kExitUsage;
}

}  // namespace

int readArguments(int argc, char** argv, Run* run) {
  Request request;
  for (int at = 1; at < argc; ++at) {
    const int status = takeArgument(argc, argv, &at, &request);
    if (status >= 0) return status;
  }
  run->fromMenu = request.fromMenu;
  run->scripted = request.script != nullptr || request.job != nullptr;
  run->headless = request.headless || (request.job != nullptr && !request.shown);
  return load(request);
}
