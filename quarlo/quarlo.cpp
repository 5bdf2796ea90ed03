/// The program's entry: its options, its working directory, its resources.
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "libkyr/output.h"
#include "quarlo/arguments.h"
#include "quarlo/shell/task_win.h"
#include "quarlo/tapelib/homefolder.h"
#include "resources/dialogs.h"
#include "resources/ids.h"
#include "xvt/offer.h"
#include "xvt/xvt.h"

namespace {

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
