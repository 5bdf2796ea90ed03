#include "quarlo/srec_dlg.h"

#include "quarlo/skipdlg.h"

long skiprecords_dialog_eh(WINDOW xdWindow, EVENT* xdEvent) {
  return skipDialogEvent(xdWindow, *xdEvent, tlv_skip_blocks);
}
