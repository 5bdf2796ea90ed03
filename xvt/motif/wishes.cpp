#include "xvt/motif/wishes.h"

#include <X11/Intrinsic.h>
#include <X11/Xatom.h>
#include <X11/Xresource.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <optional>

namespace xvt {

namespace {

constexpr int kLeastPercent = 100;
constexpr int kMostPercent = 200;

std::string lowered(std::string_view text) {
  std::string lower(text);
  for (char& byte : lower)
    if (byte >= 'A' && byte <= 'Z') byte = static_cast<char>(byte - 'A' + 'a');
  return lower;
}

// ---- the desktop --------------------------------------------------------------------------------------------------

/// Numbers and texts out of a block of bytes, as long as there are any.
class SettingsReader {
 public:
  explicit SettingsReader(std::string_view bytes) : bytes_(bytes), bigEndian_(!bytes.empty() && bytes[0] == 1) {}
  bool isSound() const { return sound_; }

  std::string_view take(std::size_t count) {
    sound_ = sound_ && count <= bytes_.size() - at_;
    if (!sound_) return {};
    at_ += count;
    return bytes_.substr(at_ - count, count);
  }

  std::size_t number(std::size_t size) {
    std::size_t value = 0;
    const std::string_view digits = take(size);
    for (std::size_t at = 0; at < digits.size(); ++at)
      value = value << 8 | static_cast<unsigned char>(digits[bigEndian_ ? at : digits.size() - 1 - at]);
    return value;
  }

  /// Texts are filled up to a multiple of four bytes.
  std::string_view text(std::size_t length) {
    const std::string_view found = take(length);
    take((4 - length % 4) % 4);
    return found;
  }

 private:
  std::string_view bytes_;
  bool bigEndian_;
  std::size_t at_ = 0;
  bool sound_ = true;
};

/// What the manager of the first screen publishes.
std::string publishedSettings(Display* display) {
  const std::string selection = "_XSETTINGS_S" + std::to_string(DefaultScreen(display));
  // Held, so that the manager's window cannot go between the two questions.
  XGrabServer(display);
  const ::Window manager = XGetSelectionOwner(display, XInternAtom(display, selection.c_str(), False));
  constexpr long kMostWords = 1 << 16;
  const Atom property = XInternAtom(display, "_XSETTINGS_SETTINGS", False);
  Atom type = 0;
  int format = 0;
  unsigned long count = 0;
  unsigned long left = 0;
  unsigned char* data = nullptr;
  if (manager != None)
    XGetWindowProperty(display, manager, property, 0, kMostWords, False, property, &type, &format, &count, &left,
                       &data);
  XUngrabServer(display);
  XFlush(display);
  const std::unique_ptr<unsigned char, int (*)(void*)> owner(data, XFree);
  return data != nullptr && format == 8 ? std::string(data, data + count) : std::string();
}

/// A value of the file that says how programs look where no manager runs; "" where it has none.
std::string settingOfFile(std::string_view key) {
  const char* folder = std::getenv("XDG_CONFIG_HOME");
  const char* home = std::getenv("HOME");
  std::string path;
  if (folder != nullptr && *folder == '/')
    path = folder;
  else if (home != nullptr)
    path = std::string(home) + "/.config";
  std::ifstream file(path + "/gtk-3.0/settings.ini");
  std::string line;
  while (std::getline(file, line)) {
    std::erase_if(line, [](char byte) { return byte == ' ' || byte == '\t' || byte == '\r'; });
    if (line.starts_with(key) && line.substr(key.size()).starts_with('=')) return line.substr(key.size() + 1);
  }
  return "";
}

bool isDarkTheme(std::string_view theme) { return lowered(theme).ends_with("-dark"); }

bool isDesktopDark(Display* display) {
  const std::string theme = settingIn(publishedSettings(display), "Net/ThemeName");
  if (!theme.empty()) return isDarkTheme(theme);
  const std::string preferred = lowered(settingOfFile("gtk-application-prefer-dark-theme"));
  return preferred == "1" || preferred == "true" || isDarkTheme(settingOfFile("gtk-theme-name"));
}

// ---- the user -----------------------------------------------------------------------------------------------------

/// A word of the user's, and where it was said.
struct Wish {
  std::string where;
  std::string word;
};

/// `name` in lower case is that of the resource; the environment goes first.
std::optional<Wish> wishFor(Display* display, const std::string& program, const std::string& className,
                            const std::string& name) {
  const auto upper = [](std::string text) {
    for (char& byte : text)
      byte = byte == '-' ? '_' : byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 'a' + 'A') : byte;
    return text;
  };
  const std::string variable = upper(program + "_" + name);
  if (const char* word = std::getenv(variable.c_str()); word != nullptr && *word != '\0') return Wish{variable, word};
  const std::string ofClass = className + "." + upper(name.substr(0, 1)) + name.substr(1);
  char* type = nullptr;
  XrmValue value{};
  if (XrmGetResource(XtScreenDatabase(DefaultScreenOfDisplay(display)), (program + "." + name).c_str(), ofClass.c_str(),
                     &type, &value) == False)
    return std::nullopt;
  return Wish{program + "*" + name, std::string(value.addr, strnlen(value.addr, value.size))};
}

/// The percentage of a text such as "150" or "150%".
std::optional<int> percentOf(std::string_view word) {
  if (word.ends_with('%')) word.remove_suffix(1);
  int percent = 0;
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), percent);
  const bool whole = error == std::errc() && end == word.data() + word.size();
  if (!whole || percent < kLeastPercent || percent > kMostPercent) return std::nullopt;
  return percent;
}

}  // namespace

std::string settingIn(std::string_view settings, std::string_view name) {
  constexpr std::size_t kTypeText = 1;
  constexpr std::size_t kTypeColor = 2;
  SettingsReader reader(settings);
  reader.take(8);  // byte order, serial number
  for (std::size_t left = reader.number(4); left > 0 && reader.isSound(); --left) {
    const std::size_t type = reader.number(1);
    reader.take(1);
    const std::string_view found = reader.text(reader.number(2));
    reader.take(4);  // serial number
    if (type == kTypeText) {
      const std::string_view value = reader.text(reader.number(4));
      if (found == name && reader.isSound()) return std::string(value);
    } else {
      reader.take(type == kTypeColor ? 8 : 4);
    }
  }
  return "";
}

LookWishes LookWishes::of(Display* display, const std::string& program, const std::string& className) {
  LookWishes wishes;
  const auto palette = wishFor(display, program, className, "palette");
  const std::string word = palette ? lowered(palette->word) : "desktop";
  if (word == "desktop")
    wishes.dark = isDesktopDark(display);
  else if (word == "dark")
    wishes.dark = true;
  else if (word != "light")
    std::fprintf(stderr, "%s: %s is \"%s\", not light, dark or desktop: light is taken\n", program.c_str(),
                 palette->where.c_str(), palette->word.c_str());
  if (const auto scale = wishFor(display, program, className, "scale")) {
    const std::optional<int> percent = percentOf(scale->word);
    if (!percent)
      std::fprintf(stderr, "%s: %s is \"%s\", not a percentage from 100 to 200: 100 is taken\n", program.c_str(),
                   scale->where.c_str(), scale->word.c_str());
    wishes.percent = percent.value_or(100);
  }
  return wishes;
}

}  // namespace xvt
