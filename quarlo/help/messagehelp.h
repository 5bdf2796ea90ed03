/// From a message to its explanation.
#pragma once

#include <optional>
#include <string_view>

#include "quarlo/help/helppage.h"

/// The page that explains messages: a heading for each, which holds its text as the program's sources have it.
constexpr const char* kMessagesPage = "messages.md";

/// How much of a message a pattern with the placeholders of printf stands for: the characters between these, which all
/// occur in the message in their order, the last third may be missing; 0 when they do not. A pattern that is the whole
/// message counts more than one that stands in its midst.
std::size_t likeness(std::string_view pattern, std::string_view message);

/// The heading of the page that is most like a message; null when none is like it.
const HelpHeading* explanationOf(const HelpPage& page, std::string_view message);
