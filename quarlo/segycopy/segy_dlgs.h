/// The dialogs that edit the settings of a SEG Y copy. Each edits a copy of its record, which OK stores in SgyParams.
#pragma once

#include "quarlo/segycopy/segycopy_params.h"
#include "xvt/xvt.h"

/// Options of the copy, modal, from DLG_SEGY; opens the two below.
long SegyCpy_eh(WINDOW xdWindow, EVENT* xdEvent);
/// Range limit by polygon, modal, from DLG_SEGY_POLYGON.
long PolyDlg_eh(WINDOW xdWindow, EVENT* xdEvent);
/// Range limit by list, modal, from DLG_SEGY_LIST.
long ListDlg_eh(WINDOW xdWindow, EVENT* xdEvent);

/// Set every control of their dialog from a record, and what can be used.
void setCopyState(WINDOW theDialog, const SgyCopyParams* params);
void setPolyState(WINDOW theDialog, PolyParams* params);
/// The list dialog's titles. @param listType LIMIT_SENSE
void setLabels(WINDOW dlg, int listType);

/// Fills an option list with the data types and selects `theType`.
void initTypeField(WINDOW theControl, int theType);
/// Shows one value of a typed polygon; a value at or beyond the number of points becomes 0.0 and is not shown.
/// @param index row, from 0
/// @param fieldType DATA_TYPE of the value's key: floats have decimals
void setField(WINDOW theControl, double* value, int index, int fieldType, const PolyParams* params);
