/// The program's entry: its options, its working directory, its resources.
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <string_view>

#include "libkyr/output.h"
#include "quarlo/shell/task_win.h"
#include "quarlo/tapelib/homefolder.h"
#include "resources/dialogs.h"
#include "resources/ids.h"
#include "xvt/offer.h"
#include "xvt/script/script.h"
#include "xvt/xvt.h"

namespace {

constexpr int EXIT_USAGE = 2;

constexpr const char* usage =
    "usage: quarlo [OPTION ...]\n"
    "Tape and disk input and output for seismic data.\n"
    "\n"
    "  --script FILE   play a script against the windows; the exit status tells how it went\n"
    "  --headless      play the script without a screen\n"
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

constexpr XOption xOptions[] = {
    {"-background", true},  {"-bg", true},           {"-bd", true},           {"-bordercolor", true},
    {"-bw", true},          {"-borderwidth", true},  {"-display", true},      {"-fg", true},
    {"-foreground", true},  {"-fn", true},           {"-font", true},         {"-geometry", true},
    {"-iconic", false},     {"-name", true},         {"-rv", false},          {"-reverse", false},
    {"+rv", false},         {"-synchronous", false}, {"+synchronous", false}, {"-title", true},
    {"-xnllanguage", true}, {"-xrm", true},          {"-xtsessionID", true},  {"-selectionTimeout", true},
};

int refuse(const char* what, const char* argument) {
  std::fprintf(stderr, "quarlo: %s \"%s\" (see quarlo --help)\n", what, argument);
  return EXIT_USAGE;
}

int show(const char* text) {
  std::puts(text);
  return endOfOutput("quarlo", EXIT_SUCCESS, EXIT_FAILURE);
}

/// Where the windows are to stand.
struct Run {
  bool scripted = false;
  bool headless = false;
};

/// Does the arguments' work so far as it is not the toolkit's. @return -1 to go on, else the exit status
int readArguments(int argc, char** argv, Run* run) {
  for (int n = 1; n < argc; ++n) {
    const std::string_view argument = argv[n];
    const auto* known = std::ranges::find(xOptions, argument, &XOption::name);
    if (argument == "--help") return show(usage);
    if (argument == "--version") return show("quarlo " QUARLO_VERSION);
    if (argument == "--script") {
      if (++n == argc) return refuse("no file after", "--script");
      if (!xvt_script_load(argv[n])) return EXIT_USAGE;
      run->scripted = true;
    } else if (argument == "--headless") {
      run->headless = true;
    } else if (known == std::end(xOptions)) {
      return refuse("unknown option", argv[n]);
    } else if (known->hasValue && ++n == argc) {
      return refuse("no value after", argv[n - 1]);
    }
  }
  if (run->headless && !run->scripted) return refuse("no --script beside", "--headless");
  return -1;
}

/// A script needs no screen: it is played without one where that is wished, or where none can be had.
void offerRuntimes(const Run& run) {
  if (!run.headless) xvt_app_offer_screen();
  if (run.scripted) xvt_app_offer_headless();
}

/// Goes to the suite's directory, so that relative paths in every dialog count from there.
void enterHome() {
  const char* home = std::getenv("KYRHOME");
  if (home != nullptr && chdir(home) != 0)
    std::fprintf(stderr, "quarlo: KYRHOME \"%s\": %s\n", home, std::strerror(errno));
  std::error_code unknown;
  setHomeFolder(std::filesystem::current_path(unknown).string());
}

}  // namespace

int main(int argc, char** argv) {
  Run run;
  const int status = readArguments(argc, argv, &run);
  if (status >= 0) return status;
  // A file that may not grow, or a pipe that nobody reads, is an error of the write, told in its job's words.
  for (const int number : {SIGXFSZ, SIGPIPE}) std::signal(number, SIG_IGN);
  enterHome();
  xvt_res_use(quarloResources());
  offerRuntimes(run);
  const XVT_CONFIG xvt_config = {.menu_bar_ID = MENU_BAR,
                                 .about_box_ID = DLG_ABOUT,
                                 .base_appl_name = "quarlo",
                                 .appl_name = "Document Title",
                                 .taskwin_title = "Kyr Quarlo"};
  return endOfOutput("quarlo", xvt_app_create(argc, argv, 0, task_eh, &xvt_config), EXIT_FAILURE);
}
