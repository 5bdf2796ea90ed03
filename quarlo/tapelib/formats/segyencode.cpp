#include "quarlo/tapelib/formats/segyencode.h"

#include <cstring>

#include "libkyr/byteorder.h"
#include "libkyr/segysamples.h"

namespace {

std::int32_t integerOf(const FieldValue& value, int type) {
  if (type == byteType) return value.byteValue;
  return type == shortIntType ? value.shortValue : value.longValue;
}

constexpr bool isFloat(int type) { return type == singleFloatType || type == doubleFloatType; }

double realOf(const FieldValue& value, int type) {
  if (type == doubleFloatType) return value.doubleValue;
  return type == singleFloatType ? double{value.floatValue} : static_cast<double>(integerOf(value, type));
}

FieldValue fromInteger(std::int32_t integer, int type) {
  FieldValue value{};
  if (type == byteType) value.byteValue = static_cast<std::int8_t>(integer);
  if (type == shortIntType) value.shortValue = static_cast<std::int16_t>(integer);
  if (type == longIntType) value.longValue = integer;
  return value;
}

FieldValue fromReal(double real, int type) {
  FieldValue value{};
  if (type == byteType) value.byteValue = cutTo<std::int8_t>(real);
  if (type == shortIntType) value.shortValue = cutTo<std::int16_t>(real);
  if (type == longIntType) value.longValue = cutTo<std::int32_t>(real);
  if (type == singleFloatType) value.floatValue = static_cast<float>(real);
  if (type == doubleFloatType) value.doubleValue = real;
  return value;
}

void reverse(char* bytes, int count) {
  if (count == 2) byteswap(bytes, 1);
  if (count == 4) longswap(bytes, 1);
  if (count == 8) doubleswap(bytes, 1);
}

}  // namespace

bool segyCoerce(const FieldValue* inputValue, int inputType, FieldValue* outputValue, int outputType) {
  if (!isKyrType(inputType) || !isKyrType(outputType)) return false;
  *outputValue = isFloat(inputType) || isFloat(outputType) ? fromReal(realOf(*inputValue, inputType), outputType)
                                                           : fromInteger(integerOf(*inputValue, inputType), outputType);
  return true;
}

FieldPut encodeSegyField(std::span<char> header, const FieldValue* aValue, const SegyField* field, bool swap) {
  if (!isKyrType(field->itsType)) return FieldPut::Missing;
  const int bytes = kyrTypeBytes(field->itsType);
  if (!headerHolds(header.size(), *field)) return FieldPut::Outside;
  const FieldValue scaled = fromReal(realOf(*aValue, field->itsType) * field->itsScaleFactor, field->itsType);
  char* const place = header.data() + field->itsOffset;
  std::memcpy(place, &scaled, static_cast<std::size_t>(bytes));  // every member of the union begins at its start
  if (swap) reverse(place, bytes);
  return FieldPut::Stored;
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
