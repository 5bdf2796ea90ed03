/// Cutting, copying and pasting in edit fields.
#pragma once

#include <Xm/Xm.h>

namespace xvt {

class EditItem;

/// Keys and middle button of a text field come here, and to no way of Motif's own.
void listenForPastes(Widget field);
/// Asks for a selection in the field's name; the field takes the answer if it still has the keyboard when it comes.
void paste(const EditItem& field, Atom selection, Time time);

}  // namespace xvt
