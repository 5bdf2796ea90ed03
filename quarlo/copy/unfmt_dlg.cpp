#include "quarlo/copy/unfmt_dlg.h"

#include <limits>

#include "quarlo/copy/unfmtcpy.h"
#include "quarlo/tapelib/dialogs/controls.h"
#include "quarlo/tapelib/dialogs/dialogevents.h"
#include "resources/ids.h"

namespace {

/// What the dialog edits: stored on OK only.
struct Parameters {
  int rawOutput = 0;        // place in the radio group
  int secondBlockType = 0;  // place in the radio group
  int eofCount = 0;
  bool concatenate = false;
  bool oneForOne = false;
  bool printFiles = false;
};

Parameters edited;

NumberField eofCountField() {
  return {.control = UF_EOF_COUNT,
          .value = &edited.eofCount,
          .high = std::numeric_limits<int>::max() - 2,
          .absolute = true};
}

void create(WINDOW dialog) {
  edited = {TheOutFileType == OF_RAW ? 1 : 0,
            TheBlockType == kBlockType2 ? 1 : 0,
            EofCount,
            Concatenate,
            OneForOne,
            PrintFiles};
  xdCheckRadioButton(dialog, UF_TPF + edited.rawOutput, UF_TPF, UF_RAW);
  xdCheckRadioButton(dialog, UF_BLOCK_TYPE_1 + edited.secondBlockType, UF_BLOCK_TYPE_1, UF_BLOCK_TYPE_2);
  const auto* isM4 = static_cast<const short*>(xvt_vobj_get_data(dialog));
  enableControls(dialog, {UF_BLOCK_TYPE_1, UF_BLOCK_TYPE_2}, isM4 != nullptr && *isM4 != 0);
  showNumber(dialog, eofCountField());
  checkControl(dialog, UF_CONCATENATE, edited.concatenate);
  checkControl(dialog, UF_ONE_FOR_ONE, edited.oneForOne);
  checkControl(dialog, UF_PRINT_FILES, edited.printFiles);
}

void store(WINDOW dialog) {
  TheOutFileType = edited.rawOutput != 0 ? OF_RAW : OF_TPF;
  TheBlockType = edited.secondBlockType != 0 ? kBlockType2 : kBlockType1;
  EofCount = edited.eofCount;
  Concatenate = edited.concatenate;
  OneForOne = edited.oneForOne;
  PrintFiles = edited.printFiles;
  xvt_vobj_destroy(dialog);
}

constexpr ControlAction kActions[] = {{UF_OK, store}, {UF_CANCEL, xvt_vobj_destroy}};

void control(WINDOW dialog, const EVENT& event) {
  if (readNumber(dialog, event, eofCountField()) || chooseRadio(dialog, event, UF_TPF, UF_RAW, &edited.rawOutput) ||
      chooseRadio(dialog, event, UF_BLOCK_TYPE_1, UF_BLOCK_TYPE_2, &edited.secondBlockType) ||
      toggleFlag(dialog, event, UF_CONCATENATE, &edited.concatenate) ||
      toggleFlag(dialog, event, UF_ONE_FOR_ONE, &edited.oneForOne) ||
      toggleFlag(dialog, event, UF_PRINT_FILES, &edited.printFiles))
    return;
  runAction(kActions, dialog, event);
}

}  // namespace

long NoFmtParam_eh(WINDOW xdWindow, EVENT* xdEvent) {
  return dialogEvents(xdWindow, *xdEvent, {.create = create, .control = control});
}
