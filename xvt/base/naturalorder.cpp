#include "xvt/base/naturalorder.h"

#include <algorithm>
#include <cstdlib>
#include <cwctype>

#include "xvt/base/utf8.h"

namespace xvt {

namespace {

bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }

/// The digits that a text begins with, taken off it, without zeros in front.
std::string_view takeNumber(std::string_view* text) {
  const auto end = std::find_if_not(text->begin(), text->end(), isDigit);
  std::string_view number = text->substr(0, static_cast<std::size_t>(end - text->begin()));
  text->remove_prefix(number.size());
  number.remove_prefix(std::min(number.find_first_not_of('0'), number.size()));
  return number;
}

/// One character of several bytes without regard to case; as it is where the session knows no other case of it.
std::string foldedCharacter(std::string_view character) {
  wchar_t wide = 0;
  std::string copy(character);
  if (std::mbtowc(&wide, copy.c_str(), copy.size()) <= 0) return copy;
  std::string lower(MB_CUR_MAX, '\0');
  const int length = std::wctomb(lower.data(), static_cast<wchar_t>(std::towlower(static_cast<wint_t>(wide))));
  return length > 0 ? lower.substr(0, static_cast<std::size_t>(length)) : copy;
}

}  // namespace

std::string folded(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const std::size_t length = std::max<std::size_t>(1, utf8SequenceLength(text));
    const char first = text.front();
    if (length == 1)
      result += first >= 'A' && first <= 'Z' ? static_cast<char>(first - 'A' + 'a') : first;
    else
      result += foldedCharacter(text.substr(0, length));
    text.remove_prefix(length);
  }
  return result;
}

int compareNatural(std::string_view one, std::string_view other) {
  while (!one.empty() && !other.empty()) {
    if (isDigit(one.front()) && isDigit(other.front())) {
      const std::string_view number = takeNumber(&one);
      const std::string_view otherNumber = takeNumber(&other);
      if (number.size() != otherNumber.size()) return number.size() < otherNumber.size() ? -1 : 1;
      if (const int order = number.compare(otherNumber); order != 0) return order;
      continue;
    }
    if (one.front() != other.front())
      return static_cast<unsigned char>(one.front()) < static_cast<unsigned char>(other.front()) ? -1 : 1;
    one.remove_prefix(1);
    other.remove_prefix(1);
  }
  return static_cast<int>(other.empty()) - static_cast<int>(one.empty());
}

}  // namespace xvt
