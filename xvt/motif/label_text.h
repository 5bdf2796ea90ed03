/// A label as the tables write it: "~" before its mnemonic, "~~" for a tilde.
#pragma once

#include <X11/X.h>

#include <string>

namespace xvt {

struct LabelText {
  explicit LabelText(const char* text);
  std::string plain;
  KeySym mnemonic = 0;
};

}  // namespace xvt
