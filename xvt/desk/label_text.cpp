#include "xvt/desk/label_text.h"

#include "xvt/base/utf8.h"

namespace xvt {

LabelText::LabelText(const char* text) {
  if (text == nullptr) return;
  const std::string valid = validUtf8(text);
  for (std::size_t at = 0; at < valid.size(); ++at) {
    if (valid[at] == '~' && at + 1 < valid.size()) {
      ++at;
      // Latin letters and digits are their own key symbols.
      if (valid[at] != '~' && mnemonic == 0) mnemonic = static_cast<unsigned char>(valid[at]);
    }
    plain += valid[at];
  }
}

}  // namespace xvt
