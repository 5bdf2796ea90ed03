/// Descriptions of SEG Y formats: which headers an output has, how long they are, and which named value stands where in
/// them. The writer (segywriter.h) fills fields by name; every byte position lives here.
///
/// A description is read from and saved to a text file (segyformat_file.h).
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "libkyr/kyrtype.h"
#include "libkyr/properties.h"
#include "xvt/xvt.h"

/// A value of the type that is named beside it.
union FieldValue {
  std::int8_t byteValue;
  std::int16_t shortValue;
  std::int32_t longValue;
  float floatValue;
  double doubleValue;
};
static_assert(sizeof(FieldValue) == 8);

/// Calls `visit` with a zero of the type. @return false, and no call, for what is no KyrType
template <typename Visit>
constexpr bool visitKyrType(int type, Visit visit) {
  switch (type) {
    case byteType:
      return visit(std::int8_t{}), true;
    case shortIntType:
      return visit(std::int16_t{}), true;
    case longIntType:
      return visit(std::int32_t{}), true;
    case singleFloatType:
      return visit(float{}), true;
    case doubleFloatType:
      return visit(double{}), true;
    case unsignedByteType:
      return visit(std::uint8_t{}), true;
    case unsignedShortType:
      return visit(std::uint16_t{}), true;
    case unsignedLongType:
      return visit(std::uint32_t{}), true;
    case int64Type:
      return visit(std::int64_t{}), true;
    case unsigned64Type:
      return visit(std::uint64_t{}), true;
    default:
      return false;
  }
}

constexpr bool isKyrType(int type) {
  return visitKyrType(
      type, [](auto /*zero*/) {});
}

/// Bytes of a value of this type; 1 for what is no KyrType.
constexpr int kyrTypeBytes(int type) {
  int bytes = 1;
  visitKyrType(type, [&bytes](auto zero) { bytes = static_cast<int>(sizeof zero); });
  return bytes;
}

/// The value as the type T that it is known to have; every type begins at the union's start.
template <typename T>
T valueIn(const FieldValue& value) {
  T typed;
  std::memcpy(&typed, &value, sizeof typed);
  return typed;
}
template <typename T>
FieldValue valueOf(T typed) {
  FieldValue value{};
  std::memcpy(&value, &typed, sizeof typed);
  return value;
}

constexpr int kMaxOutputProperties = 42;

/// One named field of a header.
struct SegyField {
  SegyField* nextField = nullptr;  ///< owned by the format
  char itsName[64] = "";           ///< the key that the code knows, such as "TraceNumber"
  char itsDescription[64] = "";    ///< shown in lists
  KyrType itsType = longIntType;
  int itsOffset = 0;                 ///< bytes from the header's start
  short itIsOverridden = 0;          ///< a fixed value replaces whatever the program supplies
  FieldValue itsOverrideValue = {};  ///< of type itsType
  double itsScaleFactor = 1.0;       ///< multiplies the value before it is stored
  char itsScaleField[64] = "";       ///< field of the same header that holds the SEG Y scalar of this one; or empty
  char itsReplaced[64] = "";         ///< field in whose place this one stands where it is not 0; or empty
  short itIsRequired = 0;
  short itIsBinaryField = 0;              ///< stands in the binary reel header
  short itIsEditedField = 0;              ///< changed by the user
  short itIsMapped = 0;                   ///< mapped from a dataset's trace property
  TraceProperty inputKyrHeader = trNone;  ///< trace property that the field is read into
  int kyrHeaderCount = 0;                 ///< entries of outputKyrHeader
  TraceProperty outputKyrHeader[kMaxOutputProperties] = {};
  short itHasRange = 0;
  FieldValue itsRangeMin = {};  ///< of type itsType
  FieldValue itsRangeMax = {};
  short itIsTold = 0;  ///< the writer has said that the header does not hold it, or it not its value
};

/// A format description.
struct SegyFormat {
  FILE_SPEC itsFileSpec = {};  ///< where it is stored
  char itsName[257] = "";
  int itsVersion = 0;        ///< of the stored text
  short itIsReadOnly = 0;    ///< may not be edited
  short itDoesStripAux = 0;  ///< auxiliary traces are dropped
  short itDoesVibCorr = 0;   ///< vibroseis correlation is applied
  short itDoesMinPhase = 0;  ///< minimum-phase conversion is applied
  int itDoesSwapBytes = 0;   ///< sample bytes are swapped on input
  int itsStartPad = 0;
  int itsEndPad = 0;
  int itsTraceTypes[3] = {};
  short itsSweepTraceFixed = 0;
  short itHasReelHeader = 0;  ///< a text reel header is written
  short itHasReelEBCDIC = 0;  ///< in EBCDIC, else ASCII
  int itsReelBytes = 0;
  int itUsesTextFile = 0;  ///< the text reel header is taken from itsTextFileSpec
  FILE_SPEC itsTextFileSpec = {};
  short itHasBinaryHeader = 0;
  int itsBinaryBytes = 0;
  short itHasTraceHeader = 0;
  int itsTraceRecord = 0;
  int itsTraceBytes = 0;  ///< counts in a trace's length even without itHasTraceHeader
  short itOutputsDeadTraces = 0;
  short itsCurrentBField = 0;  ///< selected rows of the two field lists
  short itsCurrentTField = 0;
  SegyField* itsBinaryFields = nullptr;
  SegyField* itsTraceFields = nullptr;
  int itsBinaryCount = 0;
  int itsTraceCount = 0;
  int itIsInputFmt = 0;                                    ///< describes an input
  int itIsBigEndian = 0;                                   ///< multi-byte values are written big-endian
  double itsExactInterval = 0;                             ///< microseconds with decimals, of what is written; 0: none
  std::vector<std::unique_ptr<SegyField>> itsOwnedFields;  ///< the nodes of both lists
  void (*itsConsoleLine)(const char* line) = nullptr;      ///< where the writer's lines go; null: the default console
};

/// Longest header that a description may give, in bytes.
constexpr int kMaxSegyHeaderBytes = 1024 * 1024;

/// Appends a copy of `field` to the list of the binary reel header or of the trace header. @return the new node
SegyField* addSegyField(SegyFormat* format, bool isBinary, const SegyField& field);

/// The first field of this name, or null.
SegyField* getField(SegyField* fieldList, const char* fieldName);
const SegyField* getField(const SegyField* fieldList, const char* fieldName);

/// The first field that replaces the one of this name, or null.
SegyField* getReplacement(SegyField* fieldList, const char* fieldName);
const SegyField* getReplacement(const SegyField* fieldList, const char* fieldName);

/// The length that the description gives the header of a field, in bytes; 0 for a negative one.
int segyHeaderBytes(const SegyFormat& format, bool isBinary);

/// True when all bytes of the field lie within a header of this length.
bool headerHolds(std::size_t headerBytes, const SegyField& field);
/// True when two fields of a header share a byte.
bool fieldsMeet(const SegyField& one, const SegyField& other);

/// Which other fields boundsCheck compares with: all (an output's lists) or only those that are read into a trace
/// property (an input's).
enum BOUNDS_DIALOG : int { BOUNDS_ALL = 0, BOUNDS_INPUT = 1 };

/// Checks a field of `theFields`. Adds 1 to the high 16 bits of the flags when it begins before its header or its last
/// byte, counted from 0, passes the header's length (a field that ends one byte behind its header passes), and 1 to the
/// low 16 bits for every field of another name that shares a byte with it: over a whole list each pair counts twice.
/// Neither count goes beyond 65535.
/// @param dlgType BOUNDS_DIALOG; any other value compares with no field
void boundsCheck(const SegyFormat* theFormat, const SegyField* theFields, const SegyField* thisField,
                 unsigned int* theFlags, int dlgType);

/// The two counts in the flags of a whole list.
constexpr unsigned overlapsIn(unsigned boundsFlags) { return (boundsFlags & 0xFFFFU) / 2; }
constexpr unsigned outsideIn(unsigned boundsFlags) { return boundsFlags >> 16; }
