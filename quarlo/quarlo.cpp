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
#include "quarlo/tapelib/sharefolder.h"
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

void enter(const char* what, const char* folder) {
  if (chdir(folder) != 0) std::fprintf(stderr, "quarlo: %s \"%s\": %s\n", what, folder, std::strerror(errno));
}

/// Goes to the suite's directory, so that relative paths in every dialog count from there.
void enterHome(const Run& run) {
  std::error_code unknown;
  if (const char* home = std::getenv("KYRHOME"); home != nullptr) {
    enter("KYRHOME", home);
  } else if (const std::string own = userShareFolder("files"); run.fromMenu && !own.empty()) {
    std::filesystem::create_directories(own, unknown);
    enter("its folder", own.c_str());
  }
  setHomeFolder(std::filesystem::current_path(unknown).string());
}

}  // namespace

int main(int argc, char** argv) {
  Run run;
  const int status = readArguments(argc, argv, &run);
  if (status >= 0) return status;
  // A file that may not grow, or a pipe that nobody reads, is an error of the write, told in its job's words.
  for (const int number : {SIGXFSZ, SIGPIPE}) std::signal(number, SIG_IGN);
  enterHome(run);
  xvt_res_use(quarloResources());
  offerRuntimes(run);
  const XVT_CONFIG xvt_config = {.menu_bar_ID = MENU_BAR,
                                 .about_box_ID = DLG_ABOUT,
                                 .base_appl_name = "quarlo",
                                 .appl_name = "Document Title",
                                 .taskwin_title = "Kyr Quarlo"};
  return endOfOutput("quarlo", xvt_app_create(argc, argv, 0, task_eh, &xvt_config), EXIT_FAILURE);
}
