/// Reading controls into the standard library's texts.
#pragma once

#include <cstring>
#include <string>

#include "xvt/xvt.h"

namespace xvt {

/// All of a text that a call copies into a buffer, whatever its length. A text that is cut ends with a whole character:
/// it fills the buffer but for three bytes at most.
template <typename CopyInto>
std::string wholeText(CopyInto copyInto) {
  std::string text(256, '\0');
  for (;;) {
    copyInto(text.data(), text.size());
    const std::size_t length = std::strlen(text.c_str());
    const bool whole = length + 4 < text.size();
    text.resize(whole ? length : text.size() * 2);
    if (whole) return text;
  }
}

/// Title of a window, text of a control.
inline std::string titleOf(WINDOW window) {
  return wholeText([window](char* buffer, std::size_t size) { xvt_vobj_get_title(window, buffer, size); });
}

inline std::string rowText(WINDOW list, int row) {
  return wholeText([=](char* buffer, std::size_t size) { xvt_list_get_text(list, row, buffer, size); });
}

}  // namespace xvt
