#include "quarlo/tapelib/frame/traceoutput.h"

#include <cstring>

#include "libkyr/nullvalue.h"
#include "quarlo/tapelib/frame/outputkinds.h"
#include "quarlo/tapelib/tlv_fcn.h"

namespace {

/// The block when it is one of this kind, else null.
template <typename Block>
const Block* blockOf(const int* block, const char* signature) {
  if (block == nullptr) return nullptr;
  const auto* const known = reinterpret_cast<const Block*>(block);
  const bool fits = std::strncmp(known->head.signature, signature, sizeof known->head.signature) == 0 &&
                    known->head.size >= static_cast<int>(sizeof(Block)) && known->head.version >= 1;
  return fits ? known : nullptr;
}

}  // namespace

int tracePropertyOr(const TraceInfo& header, int code, int otherwise) {
  int value = 0;
  GetTraceProperty(code, longIntType, gUnknownUnits, &value, &header);
  return IsValueNull(value) ? otherwise : value;
}

bool isAuxiliaryTrace(const TraceInfo& header) {
  const int type = tracePropertyOr(header, trTraceType, 1);
  return type > 2;
}

std::unique_ptr<TraceOutput> makeTraceOutput(ProcessRecord* procRecord, const int* block, std::string told) {
  const auto refuse = [&](const char* line) {
    ProcessConsole(procRecord, line);
    return nullptr;
  };
  if (procRecord->diskFileOutputType == KYR_CHECK_RUN) return makeCheckOutput(procRecord);
  const UnitStruct* const units = GetDevUnit(procRecord);
  if (units == nullptr || (units[1].type != UT_DISK && units[1].type != UT_TAPE))
    return refuse("  *** Error: there is no output.");
  if (procRecord->diskFileOutputType == KYR_ID_SEGY) {
    const auto* const how = blockOf<KyrSegyOutput>(block, KYR_SEGY_OUTPUT);
    if (how == nullptr)
      return refuse("  *** The parameters of the SEG Y output are not those of this program's module.");
    return makeSegyOutput(procRecord, *how, std::move(told));
  }
  if (procRecord->diskFileOutputType != KYR_ID_DATASET) return refuse("  *** This output format cannot be written.");
  if (blockOf<KyrDatasetOutput>(block, KYR_DATASET_OUTPUT) == nullptr)
    return refuse("  *** The parameters of the dataset output are not those of this program's module.");
  if (units[1].type != UT_DISK) return refuse("  *** A dataset cannot be written to tape.");
  return makeDatasetOutput(procRecord);
}
