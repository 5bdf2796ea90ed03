/// The pieces of a SEG Y format description's text form: settings by their keys, one table for reading and for writing,
/// and numbers as text.
#pragma once

#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

#include "quarlo/tapelib/formats/segyformat.h"

namespace segytext {

constexpr int kLowestInt = std::numeric_limits<int>::min();
constexpr int kHighestInt = std::numeric_limits<int>::max();

/// A yes/no setting or a whole number of a record.
template <typename Record>
struct Setting {
  const char* key;
  std::variant<short Record::*, int Record::*> place;
  bool isFlag = true;
  int low = 0;
  int high = 1;

  int value(const Record& record) const {
    return std::visit([&record](auto member) { return static_cast<int>(record.*member); }, place);
  }
  void set(Record* record, int value) const {
    std::visit(
        [record, value](auto member) { record->*member = static_cast<std::decay_t<decltype(record->*member)>>(value); },
        place);
  }
};

std::span<const Setting<SegyFormat>> formatSettings();
std::span<const Setting<SegyField>> fieldSettings();

/// The type's name, or null; the type of a name, or 0.
const char* typeName(int type);
int typeOfName(std::string_view name);

/// The first line is signature, version, readable, oldest reading version.
constexpr std::string_view kSignature = "Quarlo SEG Y format, version ";
constexpr std::string_view kReadable = ", readable from ";

/// A whole text as a number; nothing when it is none, out of range or not finite.
template <typename T>
std::optional<T> numberIn(std::string_view text) {
  T number{};
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  if (text.empty() || result.ec != std::errc() || result.ptr != text.data() + text.size()) return std::nullopt;
  if constexpr (std::is_floating_point_v<T>) {
    if (!std::isfinite(number)) return std::nullopt;
  }
  return number;
}

template <typename T>
bool takeNumber(std::string_view text, T* place) {
  const std::optional<T> number = numberIn<T>(text);
  *place = number.value_or(T{});
  return number.has_value();
}

/// The shortest text that numberIn reads as the same number.
template <typename T>
std::string numberText(T number) {
  char text[32];
  const auto result = std::to_chars(text, text + sizeof text, number);
  return {text, result.ptr};
}

/// A value of this type. @return false for a text that is none
bool takeValue(std::string_view text, int type, FieldValue* value);
std::string valueText(const FieldValue& value, int type);

}  // namespace segytext
