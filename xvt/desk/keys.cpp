#include "xvt/desk/keys.h"

#include <map>
#include <sstream>

#include "xvt/xvt.h"

namespace xvt {

Key keyNamed(const std::string& name) {
  static const std::map<std::string, Key> names{{"BackSpace", kBackSpaceKey},
                                                {"Tab", kTabKey},
                                                {"Return", kReturnKey},
                                                {"Escape", kEscapeKey},
                                                {"Esc", kEscapeKey},
                                                {"Delete", 0xFFFF},
                                                {"Insert", 0xFF63},
                                                {"Home", kHomeKey},
                                                {"End", kEndKey},
                                                {"Left", 0xFF51},
                                                {"Up", kUpKey},
                                                {"Right", 0xFF53},
                                                {"Down", kDownKey},
                                                {"Page_Up", kPageUpKey},
                                                {"Prior", kPageUpKey},
                                                {"Page_Down", kPageDownKey},
                                                {"Next", kPageDownKey},
                                                {"Menu", 0xFF67},
                                                {"KP_Enter", kPadEnterKey},
                                                {"KP_Down", kPadDownKey},
                                                {"space", ' '},
                                                {"plus", '+'},
                                                {"minus", '-'},
                                                {"equal", '='},
                                                {"KP_Add", 0xFFAB},
                                                {"KP_Subtract", 0xFFAD},
                                                {"comma", ','},
                                                {"period", '.'},
                                                {"slash", '/'},
                                                {"asterisk", '*'}};
  if (name.size() == 1) return lowerKey(static_cast<unsigned char>(name[0]));
  const auto found = names.find(name);
  if (found != names.end()) return found->second;
  constexpr Key kFirstFunctionKey = 0xFFBE;
  for (Key number = 1; number <= 12; ++number)
    if (name == "F" + std::to_string(number)) return kFirstFunctionKey + number - 1;
  return kNoKey;
}

bool parseKeys(const std::string& text, Key* key, unsigned* modifiers) {
  static const std::map<std::string, unsigned> names{{"Ctrl", kControl}, {"Alt", kAlt}, {"Shift", kShift}};
  *modifiers = 0;
  std::string rest = text;
  for (std::size_t plus = rest.find('+'); plus != std::string::npos && plus > 0; plus = rest.find('+')) {
    const auto modifier = names.find(rest.substr(0, plus));
    if (modifier == names.end()) return false;
    *modifiers |= modifier->second;
    rest.erase(0, plus + 1);
  }
  *key = keyNamed(rest);
  return *key != kNoKey;
}

bool isOneOf(const std::string& texts, Key key, unsigned modifiers) {
  std::istringstream words(texts);
  Key wanted = kNoKey;
  unsigned with = 0;
  for (std::string word; words >> word;)
    if (parseKeys(word, &wanted, &with) && wanted == key && with == modifiers) return true;
  return false;
}

int standardCommandFor(Key key, unsigned modifiers) {
  if (modifiers != kControl) return 0;
  switch (key) {
    case 'x':
      return M_EDIT_CUT;
    case 'c':
      return M_EDIT_COPY;
    case 'v':
      return M_EDIT_PASTE;
    case 'a':
      return M_EDIT_SELECT_ALL;
    default:
      return 0;
  }
}

bool isStandardCommand(int command) {
  return (command >= M_EDIT_CUT && command <= M_EDIT_SELECT_ALL) || command == M_HELP;
}
bool isTextCommand(int command) { return command >= M_TEXT_FIRST && command <= M_TEXT_LAST; }

std::string shownShortcut(const char* shortcuts) {
  const std::string all = shortcuts != nullptr ? shortcuts : "";
  return all.substr(0, all.find(' '));
}

}  // namespace xvt
