/// Making and breaking texts for boxes.
#pragma once

#include <cstdarg>
#include <string>
#include <string_view>
#include <vector>

namespace xvt {

/// What printf would have written, of any length.
std::string formatted(const char* format, va_list arguments) __attribute__((format(printf, 1, 0)));

/// The lines of a valid UTF-8 text, broken at blanks so that none is longer than `columns` characters. Newlines are
/// kept; a word that is longer than a line is broken inside.
std::vector<std::string> wrapped(std::string_view text, std::size_t columns);

}  // namespace xvt
