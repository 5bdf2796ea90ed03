#include "quarlo/tapelib/formats/segyencode.h"

#include <cstring>
#include <type_traits>

#include "libkyr/segysamples.h"

namespace {

template <typename To, typename From>
To converted(From value) {
  if constexpr (std::is_integral_v<To> && std::is_floating_point_v<From>)
    return cutTo<To>(value);
  else
    return static_cast<To>(value);
}

template <typename T>
T scaled(T value, double scale) {
  return scale == 1.0 ? value : converted<T>(static_cast<double>(value) * scale);
}

/// Stores what `valueOfType` makes of a zero of the field's type.
template <typename Make>
FieldPut store(std::span<char> header, const SegyField& field, bool swap, Make valueOfType) {
  if (!isKyrType(field.itsType)) return FieldPut::Missing;
  if (!headerHolds(header.size(), field)) return FieldPut::Outside;
  char* const place = header.data() + field.itsOffset;
  visitKyrType(field.itsType, [&](auto zero) {
    const auto stored = valueOfType(zero);
    std::memcpy(place, &stored, sizeof stored);
    if (swap) std::reverse(place, place + sizeof stored);
  });
  return FieldPut::Stored;
}

}  // namespace

bool segyCoerce(const FieldValue* inputValue, int inputType, FieldValue* outputValue, int outputType) {
  if (!isKyrType(outputType)) return false;
  return visitKyrType(inputType, [&](auto from) {
    visitKyrType(outputType, [&](auto to) {
      *outputValue = valueOf(converted<decltype(to)>(valueIn<decltype(from)>(*inputValue)));
    });
  });
}

FieldPut encodeSegyField(std::span<char> header, const FieldValue* aValue, const SegyField* field, bool swap) {
  return store(
      header, *field, swap, [&](auto zero) { return scaled(valueIn<decltype(zero)>(*aValue), field->itsScaleFactor); });
}

FieldPut encodeSegyNumber(std::span<char> header, double number, const SegyField& field, bool swap) {
  return store(
      header, field, swap,
      [&](auto zero) {
        using Stored = decltype(zero);
        const double product = number * field.itsScaleFactor;
        return converted<Stored>(std::is_integral_v<Stored> ? std::round(product) : product);
      });
}

FieldPut putFieldValue(const void* variable, const SegyField* fieldList, std::span<char> header, bool swap,
                       int dataType, const char* name) {
  const SegyField* const field = getField(fieldList, name);
  if (field == nullptr) return FieldPut::Missing;
  if (field->itIsOverridden != 0) return encodeSegyField(header, &field->itsOverrideValue, field, swap);
  if (!isKyrType(dataType)) return FieldPut::Missing;
  FieldValue supplied{};
  std::memcpy(&supplied, variable, static_cast<std::size_t>(kyrTypeBytes(dataType)));
  FieldValue value{};
  if (!segyCoerce(&supplied, dataType, &value, field->itsType)) return FieldPut::Missing;
  return encodeSegyField(header, &value, field, swap);
}

int overrideOf(const SegyField* fieldList, const char* name, int otherwise) {
  const SegyField* const field = getField(fieldList, name);
  FieldValue value{};
  if (field == nullptr || field->itIsOverridden == 0 ||
      !segyCoerce(&field->itsOverrideValue, field->itsType, &value, longIntType))
    return otherwise;
  return value.longValue;
}

int GetSegyBytes(int fmtCode) {
  // 8-bit samples are carried in words of two bytes: readers of these files count on it.
  return fmtCode == SEGY_INT16 || fmtCode == SEGY_INT8 ? 2 : 4;
}
