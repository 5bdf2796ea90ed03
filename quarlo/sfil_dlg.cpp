#include "quarlo/sfil_dlg.h"

#include "quarlo/skipdlg.h"

long skipfiles_dialog_eh(WINDOW xdWindow, EVENT* xdEvent) {
  return skipDialogEvent(xdWindow, *xdEvent, tlv_skip_files);
}
