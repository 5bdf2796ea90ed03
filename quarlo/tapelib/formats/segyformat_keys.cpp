#include "quarlo/tapelib/formats/segyformat_keys.h"

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

constexpr std::array<const char*, 5> kTypeNames = {"int8", "int16", "int32", "float32", "float64"};

}  // namespace

std::span<const Setting<SegyFormat>> formatSettings() { return kFormat; }
std::span<const Setting<SegyField>> fieldSettings() { return kField; }

const char* typeName(int type) {
  return isKyrType(type) ? kTypeNames.at(static_cast<std::size_t>(type - byteType)) : nullptr;
}

int typeOfName(std::string_view name) {
  for (int type = byteType; type <= doubleFloatType; ++type)
    if (name == typeName(type)) return type;
  return 0;
}

bool takeValue(std::string_view text, int type, FieldValue* value) {
  *value = FieldValue{};
  switch (type) {
    case byteType:
      return takeNumber(text, &value->byteValue);
    case shortIntType:
      return takeNumber(text, &value->shortValue);
    case longIntType:
      return takeNumber(text, &value->longValue);
    case singleFloatType:
      return takeNumber(text, &value->floatValue);
    default:
      return takeNumber(text, &value->doubleValue);
  }
}

std::string valueText(const FieldValue& value, int type) {
  switch (type) {
    case byteType:
      return numberText(int{value.byteValue});
    case shortIntType:
      return numberText(value.shortValue);
    case longIntType:
      return numberText(value.longValue);
    case singleFloatType:
      return numberText(value.floatValue);
    default:
      return numberText(value.doubleValue);
  }
}

}  // namespace segytext
