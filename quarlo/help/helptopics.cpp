#include "quarlo/help/helptopics.h"

#include <algorithm>
#include <iterator>

#include "quarlo/help/plaintext.h"

namespace {

struct HelpTopic {
  std::string_view window;
  const char* place;
};

/// What is no dialog, or is not called by its title.
constexpr HelpTopic kTopics[] = {
    {"task", "user-guide.md#the-windows"},
    {"about", "user-guide.md#help"},
    {"help", "user-guide.md#help"},
    {"console", "user-guide.md#windows-with-text"},
    {"find", "user-guide.md#windows-with-text"},
    {"tape-dump-window", "user-guide.md#windows-with-text"},
    {"file-dump-window", "user-guide.md#windows-with-text"},
    {"main", "dialogs.md#the-main-window"},
    {"progress", "dialogs.md#progress"},
    {"file-box", "dialogs.md#the-file-box"},
    {"dir-box", "dialogs.md#the-file-box"},
    {"error-box", "messages.md"},
    {"note-box", "messages.md"},
    {"ask-box", "messages.md"},
};

}  // namespace

std::string helpPlaceOf(std::string_view name, std::string_view title) {
  const auto* found = std::ranges::find(kTopics, name, &HelpTopic::window);
  return found != std::end(kTopics) ? found->place : "dialogs.md#" + sectionName(title);
}

HelpPlace placeOf(std::string_view place) {
  const std::size_t mark = place.find('#');
  if (mark == std::string_view::npos) return {std::string(place), ""};
  return {std::string(place.substr(0, mark)), std::string(place.substr(mark + 1))};
}
