#include "quarlo/tapelib/formats/segydecode.h"

#include <bit>
#include <cmath>
#include <string>
#include <type_traits>

#include "libkyr/byteorder.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/formats/segyencode.h"

namespace {

template <std::size_t bytes>
using BitsOf = std::conditional_t<
    bytes == 1, std::uint8_t,
    std::conditional_t<bytes == 2, std::uint16_t, std::conditional_t<bytes == 4, std::uint32_t, std::uint64_t>>>;

template <typename T>
T load(const char* place, bool bigEndian) {
  using Bits = BitsOf<sizeof(T)>;
  return std::bit_cast<T>(bigEndian ? byteorder::loadBig<Bits>(place) : byteorder::loadLittle<Bits>(place));
}

double numberOf(const FieldValue& value, int type) {
  double number = 0.0;
  visitKyrType(type, [&](auto zero) { number = static_cast<double>(valueIn<decltype(zero)>(value)); });
  return number;
}

const SegyField* listOf(const SegyFormat& format, bool isBinary) {
  return isBinary ? format.itsBinaryFields : format.itsTraceFields;
}

double unscaled(double stored, const SegyField& field) {
  return field.itsScaleFactor == 1.0 || field.itsScaleFactor == 0.0 ? stored : stored / field.itsScaleFactor;
}

}  // namespace

std::optional<double> segyScaled(double number, double scalar) {
  if (scalar == 0.0) return number;
  for (const double power : {1.0, 10.0, 100.0, 1000.0, 10000.0})
    if (std::fabs(scalar) == power) return scalar > 0.0 ? number * power : number / power;
  return std::nullopt;
}

double segyUnscaled(double number, double scalar) { return segyScaled(number, -scalar).value_or(number); }

std::optional<double> storedNumber(std::span<const char> header, const SegyField& field, bool bigEndian) {
  if (!headerHolds(header.size(), field)) return std::nullopt;
  std::optional<double> number;
  visitKyrType(field.itsType, [&](auto zero) {
    number = static_cast<double>(load<decltype(zero)>(header.data() + field.itsOffset, bigEndian));
  });
  return number;
}

SegyValue::SegyValue(const SegyFormat& format, const SegyField* field, SegyReading reading)
    : field_(field), bigEndian_(reading.bigEndian) {
  if (field == nullptr) return;
  const SegyField* const list = listOf(format, field->itIsBinaryField != 0);
  if (field->itsScaleField[0] != '\0') scalar_ = getField(list, field->itsScaleField);
  if (reading.extended) replacement_ = getReplacement(list, field->itsName);
  if (format.itIsInputFmt != 0 && field->itIsOverridden != 0)
    fixed_ = unscaled(numberOf(field->itsOverrideValue, field->itsType), *field);
}

SegyValue::SegyValue(const SegyFormat& format, bool isBinary, const char* name, SegyReading reading)
    : SegyValue(format, getField(listOf(format, isBinary), name), reading) {}

std::optional<double> SegyValue::in(std::span<const char> header, bool* oddScalar) const {
  if (fixed_ || field_ == nullptr) return fixed_;
  if (replacement_ != nullptr)
    if (const auto number = storedNumber(header, *replacement_, bigEndian_); number && *number != 0.0)
      return unscaled(*number, *replacement_);
  const auto stored = storedNumber(header, *field_, bigEndian_);
  if (!stored || scalar_ == nullptr) return stored ? std::optional(unscaled(*stored, *field_)) : stored;
  const double number = unscaled(*stored, *field_);
  const auto scaled = segyScaled(number, storedNumber(header, *scalar_, bigEndian_).value_or(0.0));
  if (!scaled && oddScalar != nullptr) *oddScalar = true;
  return scaled.value_or(number);
}

double SegyValue::positiveIn(std::span<const char> header) const {
  double number = in(header).value_or(0.0);
  if (number < 0.0 && !fixed_ && (field_->itsType == shortIntType || field_->itsType == longIntType))
    number += std::ldexp(1.0, 8 * kyrTypeBytes(field_->itsType));
  return std::isfinite(number) && number > 0.0 ? number : 0.0;
}

std::uint64_t SegyValue::countIn(std::span<const char> header) const {
  return cutTo<std::uint64_t>(positiveIn(header));
}
