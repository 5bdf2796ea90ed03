/// Keys by number and by name. Numbers are those of X: Latin letters, digits and signs are their own.
#pragma once

#include <string>

namespace xvt {

using Key = unsigned long;

constexpr Key kNoKey = 0;
constexpr Key kBackSpaceKey = 0xFF08;
constexpr Key kTabKey = 0xFF09;
constexpr Key kReturnKey = 0xFF0D;
constexpr Key kEscapeKey = 0xFF1B;
constexpr Key kNextWindowKey = 0xFFC3;  // F6
constexpr Key kMenuKey = 0xFFC7;        // F10
constexpr Key kHomeKey = 0xFF50;
constexpr Key kUpKey = 0xFF52;
constexpr Key kDownKey = 0xFF54;
constexpr Key kPageUpKey = 0xFF55;
constexpr Key kPageDownKey = 0xFF56;
constexpr Key kEndKey = 0xFF57;
constexpr Key kPadEnterKey = 0xFF8D;
constexpr Key kPadDownKey = 0xFF99;

enum KEY_MODIFIERS : unsigned { kShift = 1, kControl = 4, kAlt = 8 };

inline bool isReturn(Key key) { return key == kReturnKey || key == kPadEnterKey; }
inline Key upperKey(Key key) { return key >= 'a' && key <= 'z' ? key - 'a' + 'A' : key; }
inline Key lowerKey(Key key) { return key >= 'A' && key <= 'Z' ? key - 'A' + 'a' : key; }

/// The key of a name such as "Return", "F5", "q"; kNoKey when there is none.
Key keyNamed(const std::string& name);

/// A text such as "Ctrl+Shift+Q", "F5", "Alt+o" or "Page_Down" as key and modifiers; false when it makes no sense.
bool parseKeys(const std::string& text, Key* key, unsigned* modifiers);

/// Whether one of the keys in a text such as "Alt+Up BackSpace" is this one.
bool isOneOf(const std::string& texts, Key key, unsigned modifiers);

/// What is shown of a menu item's shortcuts, which stand with blanks between them: the first.
std::string shownShortcut(const char* shortcuts);

/// The standard editing command that a key means where no menu says so, 0 for none.
int standardCommandFor(Key key, unsigned modifiers);
bool isStandardCommand(int command);
bool isTextCommand(int command);

}  // namespace xvt
