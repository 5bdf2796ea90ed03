/// The words of a page without their marks: emphasis, links, code; and lines of a width.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// A text without its marks, and without pictures. A link to another page keeps its target, as a reference:
/// "[merge.md#the-run]".
std::string plainText(std::string_view marked);

/// The target of the first reference in a line that plainText made; empty for none.
std::string referenceIn(std::string_view line);

/// The name that links call a heading by: small letters and figures, "-" for blanks.
std::string sectionName(std::string_view heading);

/// The words of a text in lines of so many characters; a longer word stands alone.
std::vector<std::string> wrapped(std::string_view text, std::size_t width);
