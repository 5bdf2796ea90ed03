#include "quarlo/tapelib/formats/segyformat.h"

#include <algorithm>

#include "libkyr/text.h"

namespace {

// Wide enough for any offset.
std::int64_t firstByte(const SegyField& field) { return field.itsOffset; }
std::int64_t lastByte(const SegyField& field) { return firstByte(field) + kyrTypeBytes(field.itsType) - 1; }

void countOverlap(unsigned* flags) {
  if ((*flags & 0xFFFFU) != 0xFFFFU) ++*flags;
}

void countOutside(unsigned* flags) {
  if (*flags >> 16 != 0xFFFFU) *flags += 0x10000U;
}

bool takesPart(const SegyField& other, int dlgType) {
  return dlgType == BOUNDS_ALL || (dlgType == BOUNDS_INPUT && other.inputKyrHeader != trNone);
}

SegyField** endOf(SegyField** link) {
  while (*link != nullptr) link = &(*link)->nextField;
  return link;
}

}  // namespace

SegyField* addSegyField(SegyFormat* format, bool isBinary, const SegyField& field) {
  auto node = std::make_unique<SegyField>(field);
  node->nextField = nullptr;
  node->itIsBinaryField = isBinary ? 1 : 0;
  SegyField* const added = node.get();
  format->itsOwnedFields.push_back(std::move(node));
  *endOf(isBinary ? &format->itsBinaryFields : &format->itsTraceFields) = added;
  ++(isBinary ? format->itsBinaryCount : format->itsTraceCount);
  return added;
}

const SegyField* getField(const SegyField* fieldList, const char* fieldName) {
  for (const SegyField* field = fieldList; field != nullptr; field = field->nextField)
    if (fieldIs(field->itsName, fieldName)) return field;
  return nullptr;
}

SegyField* getField(SegyField* fieldList, const char* fieldName) {
  return const_cast<SegyField*>(getField(const_cast<const SegyField*>(fieldList), fieldName));
}

const SegyField* getReplacement(const SegyField* fieldList, const char* fieldName) {
  for (const SegyField* field = fieldList; field != nullptr; field = field->nextField)
    if (field->itsReplaced[0] != '\0' && fieldIs(field->itsReplaced, fieldName)) return field;
  return nullptr;
}

SegyField* getReplacement(SegyField* fieldList, const char* fieldName) {
  return const_cast<SegyField*>(getReplacement(const_cast<const SegyField*>(fieldList), fieldName));
}

int segyHeaderBytes(const SegyFormat& format, bool isBinary) {
  return std::max(0, isBinary ? format.itsBinaryBytes : format.itsTraceBytes);
}

bool headerHolds(std::size_t headerBytes, const SegyField& field) {
  return firstByte(field) >= 0 && static_cast<std::size_t>(lastByte(field) + 1) <= headerBytes;
}

bool fieldsMeet(const SegyField& one, const SegyField& other) {
  return firstByte(one) <= lastByte(other) && firstByte(other) <= lastByte(one);
}

void boundsCheck(const SegyFormat* theFormat, const SegyField* theFields, const SegyField* thisField,
                 unsigned int* theFlags, int dlgType) {
  // Not "last >= length": descriptions with a field one byte too far are in use and are not to be marked.
  const int headerBytes = segyHeaderBytes(*theFormat, thisField->itIsBinaryField != 0);
  if (firstByte(*thisField) < 0 || lastByte(*thisField) > headerBytes) countOutside(theFlags);
  for (const SegyField* other = theFields; other != nullptr; other = other->nextField)
    if (fieldText(other->itsName) != fieldText(thisField->itsName) && takesPart(*other, dlgType) &&
        fieldsMeet(*thisField, *other))
      countOverlap(theFlags);
}
