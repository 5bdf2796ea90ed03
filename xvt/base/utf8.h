/// Text that came from outside, made fit to be shown.
#pragma once

#include <string>
#include <string_view>

namespace xvt {

/// The text with each byte that is not part of a valid UTF-8 sequence replaced by U+FFFD. Overlong forms, surrogates
/// and code points beyond U+10FFFF are not valid; of a sequence cut short each byte counts as offending.
std::string validUtf8(std::string_view text);

/// Length in bytes of the valid UTF-8 sequence that `text` begins with, 0 when it begins with an offending byte.
std::size_t utf8SequenceLength(std::string_view text);

/// Number of characters of a valid text.
std::size_t utf8Characters(std::string_view text);

}  // namespace xvt
