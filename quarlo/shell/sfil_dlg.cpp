#include "quarlo/shell/sfil_dlg.h"

#include "quarlo/shell/skipdlg.h"

long skipfiles_dialog_eh(WINDOW xdWindow, EVENT* xdEvent) {
  return skipDialogEvent(xdWindow, *xdEvent, tlv_skip_files);
}
