#include "quarlo/shell/srec_dlg.h"

#include "quarlo/shell/skipdlg.h"

long skiprecords_dialog_eh(WINDOW xdWindow, EVENT* xdEvent) {
  return skipDialogEvent(xdWindow, *xdEvent, tlv_skip_blocks);
}
