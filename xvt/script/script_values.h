/// What the variables of a script may be.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace xvt::script {

/// Whether a text is one of the values `values`: alternatives with "|" between them, texts that stand for themselves,
/// which begin with a small letter or a digit, and kinds:
///   NUMBER whole   DECIMAL whole or with a point   DRIVE row number, or row text with a "*"
///   DRIVES drives or "next", commas between them   FILE, FOLDER anything that is no drive   TEXT anything
bool fits(std::string_view values, const std::string& text);
/// The same for people: "no or yes".
std::string describe(std::string_view values);
/// Whether each alternative is such a text or a kind.
bool areValues(std::string_view values);

bool isWholeNumber(const std::string& text);
/// A whole number or one with a decimal point.
bool isDecimal(const std::string& text);
/// A name that a variable can have.
bool isVariableName(std::string_view name);

/// The parts of a text between separators; none of an empty text.
std::vector<std::string> splitAt(std::string_view text, char separator);

}  // namespace xvt::script
