/// Names in the order that people expect.
#pragma once

#include <string>
#include <string_view>

namespace xvt {

/// The text without regard to case: of two texts that differ in case only the same. Bytes that are not valid UTF-8
/// stay.
std::string folded(std::string_view text);

/// Whether one folded text comes before, with (0) or behind another: numbers in them count by their value, "img2"
/// before "img10".
int compareNatural(std::string_view one, std::string_view other);

}  // namespace xvt
