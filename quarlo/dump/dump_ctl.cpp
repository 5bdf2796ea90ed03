#include "quarlo/dump/dump_ctl.h"

#include "quarlo/tapelib/dialogs/controls.h"
#include "quarlo/tapelib/tlv_fcn.h"

namespace {

void enableChoices(WINDOW dialog, const DumpControls& controls, DUMP_FORMAT format) {
  enableControls(dialog, {controls.signedInt, controls.unSignedInt}, isInteger(format));
  enableControls(dialog, {controls.bigEndian, controls.littleEndian}, hasByteOrder(format));
}

void chooseFormat(WINDOW dialog, const DumpControls& controls, DumpStyle* style) {
  const int row = xvt_list_get_selected(xvt_win_get_ctl(dialog, controls.formats));
  if (row < 0 || row >= static_cast<int>(dumpFormats.size())) return;
  style->format = static_cast<DUMP_FORMAT>(row);
  enableChoices(dialog, controls, style->format);
}

}  // namespace

bool showStyle(WINDOW dialog, const DumpControls& controls, const DumpStyle& style) {
  fillList(dialog, controls.formats, dumpFormats, style.format);
  xdCheckRadioButton(dialog, style.unSignedInt ? controls.unSignedInt : controls.signedInt, controls.signedInt,
                     controls.unSignedInt);
  xdCheckRadioButton(dialog, style.bigEndian ? controls.bigEndian : controls.littleEndian, controls.bigEndian,
                     controls.littleEndian);
  enableChoices(dialog, controls, style.format);
  return xvt_list_count(xvt_win_get_ctl(dialog, controls.formats)) == static_cast<int>(dumpFormats.size());
}

bool chooseStyle(WINDOW dialog, const EVENT& event, const DumpControls& controls, DumpStyle* style) {
  if (event.type == E_CONTROL && event.ctl.what == CTL_SELECT && event.ctl.id == controls.formats) {
    chooseFormat(dialog, controls, style);
    return true;
  }
  int chosen = 0;
  if (chooseRadio(dialog, event, controls.signedInt, controls.unSignedInt, &chosen)) {
    style->unSignedInt = chosen != 0;
    return true;
  }
  if (chooseRadio(dialog, event, controls.bigEndian, controls.littleEndian, &chosen)) {
    style->bigEndian = chosen == 0;
    return true;
  }
  return false;
}

void setDumpVisible(WINDOW dialog, const DumpControls& controls, WINDOW dumpWindow, short* isVisible, bool visible) {
  *isVisible = visible ? 1 : 0;
  if (xvt_vobj_is_valid(dumpWindow)) xvt_vobj_set_visible(dumpWindow, visible);
  nameShowButton(dialog, controls, visible);
}

void nameShowButton(WINDOW dialog, const DumpControls& controls, bool visible) {
  setControlText(dialog, controls.showWindow, visible ? "Hide Dump Window" : "Show Dump Window");
}
