#include "quarlo/dump/dump_ctl.h"

#include "quarlo/common/dump_win.h"
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

bool DumpPane::open(WINDOW dialog) {
  dialog_ = dialog;
  onDumpHidden(type_, [this] { nameButton(); });  // by its close box: the button offers to show it again
  const WINDOW made = dumpInit(type_);
  window_ = made == -1 ? NULL_WIN : made;
  return window_ != NULL_WIN;
}

void DumpPane::close() {
  onDumpHidden(type_, nullptr);
  if (window_ != NULL_WIN) {
    EVENT end;
    end.type = E_DESTROY;
    xvt_win_dispatch_event(window_, &end);
  }
  window_ = NULL_WIN;
}

void DumpPane::show() {
  if (*isVisible_ == 0) setVisible(true);
}

void DumpPane::toggle() { setVisible(*isVisible_ == 0); }

void DumpPane::setVisible(bool visible) {
  *isVisible_ = visible ? 1 : 0;
  if (xvt_vobj_is_valid(window_)) xvt_vobj_set_visible(window_, visible);
  nameButton();
}

void DumpPane::nameButton() const {
  setControlText(dialog_, button_, *isVisible_ != 0 ? "Hide Dump Window" : "Show Dump Window");
}
