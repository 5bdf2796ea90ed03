#include "quarlo/tapelib/formats/segyformat_keys.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace segytext {

namespace {

template <typename Record>
constexpr Setting<Record> number(const char* key, int Record::*place, int low, int high) {
  return {key, place, false, low, high};
}

constexpr std::array kFormat = {
    Setting<SegyFormat>{"input", &SegyFormat::itIsInputFmt},
    Setting<SegyFormat>{"read-only", &SegyFormat::itIsReadOnly},
    Setting<SegyFormat>{"big-endian", &SegyFormat::itIsBigEndian},
    Setting<SegyFormat>{"reel-header", &SegyFormat::itHasReelHeader},
    number("reel-header-bytes", &SegyFormat::itsReelBytes, 0, kMaxSegyHeaderBytes),
    Setting<SegyFormat>{"reel-header-ebcdic", &SegyFormat::itHasReelEBCDIC},
    Setting<SegyFormat>{"reel-header-from-file", &SegyFormat::itUsesTextFile},
    Setting<SegyFormat>{"binary-header", &SegyFormat::itHasBinaryHeader},
    number("binary-header-bytes", &SegyFormat::itsBinaryBytes, 0, kMaxSegyHeaderBytes),
    Setting<SegyFormat>{"trace-header", &SegyFormat::itHasTraceHeader},
    number("trace-header-bytes", &SegyFormat::itsTraceBytes, 0, kMaxSegyHeaderBytes),
    number("trace-record", &SegyFormat::itsTraceRecord, kLowestInt, kHighestInt),
    Setting<SegyFormat>{"strip-auxiliary", &SegyFormat::itDoesStripAux},
    Setting<SegyFormat>{"dead-traces", &SegyFormat::itOutputsDeadTraces},
    Setting<SegyFormat>{"vibroseis-correlation", &SegyFormat::itDoesVibCorr},
    Setting<SegyFormat>{"minimum-phase", &SegyFormat::itDoesMinPhase},
    Setting<SegyFormat>{"sweep-trace-fixed", &SegyFormat::itsSweepTraceFixed},
    Setting<SegyFormat>{"swap-input-bytes", &SegyFormat::itDoesSwapBytes},
    number("start-padding", &SegyFormat::itsStartPad, kLowestInt, kHighestInt),
    number("end-padding", &SegyFormat::itsEndPad, kLowestInt, kHighestInt),
};

constexpr std::array kField = {
    Setting<SegyField>{"required", &SegyField::itIsRequired},
    Setting<SegyField>{"edited", &SegyField::itIsEditedField},
    Setting<SegyField>{"mapped", &SegyField::itIsMapped},
};

struct TypeName {
  int type;
  const char* name;
};
constexpr std::array kTypeNames = {TypeName{byteType, "int8"},           TypeName{shortIntType, "int16"},
                                   TypeName{longIntType, "int32"},       TypeName{int64Type, "int64"},
                                   TypeName{unsignedByteType, "uint8"},  TypeName{unsignedShortType, "uint16"},
                                   TypeName{unsignedLongType, "uint32"}, TypeName{unsigned64Type, "uint64"},
                                   TypeName{singleFloatType, "float32"}, TypeName{doubleFloatType, "float64"}};

}  // namespace

std::span<const Setting<SegyFormat>> formatSettings() { return kFormat; }
std::span<const Setting<SegyField>> fieldSettings() { return kField; }

const char* typeName(int type) {
  const auto found = std::ranges::find(kTypeNames, type, &TypeName::type);
  return found == kTypeNames.end() ? nullptr : found->name;
}

int typeOfName(std::string_view name) {
  const auto found = std::ranges::find(kTypeNames, name, &TypeName::name);
  return found == kTypeNames.end() ? 0 : found->type;
}

bool takeValue(std::string_view text, int type, FieldValue* value) {
  bool sound = false;
  visitKyrType(type, [&](auto number) {
    sound = takeNumber(text, &number);
    *value = valueOf(number);
  });
  return sound;
}

std::string valueText(const FieldValue& value, int type) {
  std::string text;
  visitKyrType(type, [&](auto zero) { text = numberText(valueIn<decltype(zero)>(value)); });
  return text;
}

}  // namespace segytext
