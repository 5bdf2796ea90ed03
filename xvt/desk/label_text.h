/// A label as the tables write it: "~" before its mnemonic, "~~" for a tilde.
#pragma once

#include "xvt/desk/keys.h"

#include <string>

namespace xvt {

struct LabelText {
  explicit LabelText(const char* text);
  std::string plain;
  Key mnemonic = kNoKey;
};

}  // namespace xvt
