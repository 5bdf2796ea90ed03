/// Which page tells of which window.
#pragma once

#include <string>
#include <string_view>

constexpr const char* kGuide = "user-guide.md";
constexpr const char* kShortcuts = "user-guide.md#keys-and-shortcuts";

/// The place, "page#section", that tells of a window: of a dialog, the section of the dialogs' page that is called by
/// its title.
/// @param name the name by which scripts call the window
std::string helpPlaceOf(std::string_view name, std::string_view title);

/// Page and section of a place; either may be empty.
struct HelpPlace {
  std::string page, section;
};
HelpPlace placeOf(std::string_view place);
