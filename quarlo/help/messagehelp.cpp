#include "quarlo/help/messagehelp.h"

#include <string>
#include <vector>

#include "libkyr/text.h"

namespace {

/// Fewer characters than these say nothing.
constexpr std::size_t kLeast = 5;
constexpr std::size_t kWhole = 1000;

/// Bytes of the placeholder that a text begins with; 0 for none.
std::size_t placeholderLength(std::string_view text) {
  if (text.size() < 2 || text[0] != '%' || text[1] == '%') return 0;
  const std::size_t kind = text.find_first_not_of("-+ #0123456789.*hlLzjt", 1);
  if (kind == std::string_view::npos || std::string_view("diouxXeEfgGcsp").find(text[kind]) == std::string_view::npos)
    return 0;
  return kind + 1;
}

/// What stands before, between and behind the placeholders.
std::vector<std::string> fixedParts(std::string_view pattern) {
  std::vector<std::string> parts(1);
  while (!pattern.empty()) {
    if (const std::size_t length = placeholderLength(pattern)) {
      parts.emplace_back();
      pattern.remove_prefix(length);
      continue;
    }
    parts.back() += pattern.front();
    pattern.remove_prefix(pattern.starts_with("%%") ? 2 : 1);
  }
  return parts;
}

}  // namespace

std::size_t likeness(std::string_view pattern, std::string_view message) {
  message = trimText(message);
  const std::vector<std::string> parts = fixedParts(trimText(pattern));
  std::size_t at = 0;
  std::size_t same = 0;
  bool whole = message.starts_with(parts.front()) && message.ends_with(parts.back());
  std::size_t all = 0;
  bool stands = true;  // all parts so far do
  for (const std::string& part : parts) {
    const std::size_t found = stands ? message.find(part, at) : std::string_view::npos;
    stands = found != std::string_view::npos;
    if (stands) {
      at = found + part.size();
      same += part.size();
    }
    all += part.size();
  }
  if (same < kLeast || 3 * same < 2 * all) return 0;
  return same + (whole && stands ? kWhole : 0);
}

const HelpHeading* explanationOf(const HelpPage& page, std::string_view message) {
  const HelpHeading* best = nullptr;
  std::size_t most = 0;
  for (const HelpHeading& heading : page.headings) {
    const std::size_t like = likeness(heading.text, message);
    if (like > most) best = &heading;
    most = std::max(most, like);
  }
  return best;
}
