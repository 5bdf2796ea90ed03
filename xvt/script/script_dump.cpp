/// The windows as a script's writer wants to see them.
#include <algorithm>
#include <cstdio>
#include <string>

#include "xvt/boxes/texts.h"
#include "xvt/probe.h"
#include "xvt/resource.h"
#include "xvt/script/script_targets.h"

namespace xvt::script {

namespace {

const char* kindName(int kind) {
  switch (kind) {
    case IK_LABEL:
    case IK_HEADING:
    case IK_VALUE:
    case IK_HINT:
    case IK_STATUS:
      return "text";
    case IK_EDIT:
      return "edit";
    case IK_CHECK:
      return "check";
    case IK_RADIO:
      return "radio";
    case IK_PUSH:
    case IK_HEAD:
      return "button";
    case IK_LIST:
      return "list";
    case IK_MULTI:
      return "multi-list";
    case IK_OPTION:
      return "option";
    case IK_METER:
      return "meter";
    default:
      return "item";
  }
}

void dumpRows(WINDOW list) {
  constexpr int kMostRows = 20;
  const int count = xvt_list_count(list);
  for (int each = 0; each < std::min(count, kMostRows); ++each)
    std::printf("      %c %d \"%s\"\n", xvt_list_is_selected(list, each) ? '*' : ' ', each,
                rowText(list, each).c_str());
  if (count > kMostRows) std::printf("        ... %d rows\n", count);
}

void dumpControl(const std::string& name, WINDOW control) {
  std::printf("    %-32s %-10s", name.c_str(), kindName(probe::kind(control)));
  if (isMarkable(control)) std::printf(" %s", xvt_ctl_is_checked(control) ? "[x]" : "[ ]");
  if (!xvt_vobj_is_enabled(control)) std::printf(" disabled");
  if (!xvt_vobj_is_visible(control)) std::printf(" hidden");
  std::printf(" \"%s\"\n", flat(shownText(control)).c_str());
  if (isList(control)) dumpRows(control);
}

}  // namespace

Outcome dumpWindows(Player&, const Statement&) {
  for (const std::string& name : probe::openWindows()) {
    const WINDOW handle = probe::window(name);
    std::printf("%s \"%s\"\n", name.c_str(), titleOf(handle).c_str());
    for (const std::string& control : probe::controls(handle))
      dumpControl(std::string(name).append(".").append(control), probe::control(handle, control));
    const TXEDIT text = probe::textField(handle);
    if (text != NULL_TXEDIT) std::printf("    %ld lines\n", xvt_tx_get_num_pars(text));
  }
  std::fflush(stdout);
  return {};
}

}  // namespace xvt::script
