#include "quarlo/index/indexfile.h"

#include <algorithm>
#include <cmath>

#include "libkyr/kyrtype.h"
#include "libkyr/nullvalue.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/console.h"

int minSrcLine, maxSrcLine, minSrcLoc, maxSrcLoc;
int minRcvLine, maxRcvLine, minRcvLoc, maxRcvLoc;
int minCMPLine, maxCMPLine, minCMPLoc, maxCMPLoc;
float minOffset, maxOffset;
int minFFID, maxFFID;

namespace {

bool isNothing(int value) { return IsValueNull(value); }
bool isNothing(float value) { return IsValueNull(value) || std::isnan(value); }

template <typename Value>
struct Range {
  const char* name;
  int property;  // of the smallest; that of the largest follows it
  Value& smallest;
  Value& largest;
  bool begun = false;

  void clear() {
    smallest = largest = Value{};
    begun = false;
  }
  void take(Value value) {
    if (isNothing(value)) return;
    smallest = begun ? std::min(smallest, value) : value;
    largest = begun ? std::max(largest, value) : value;
    begun = true;
  }
};

Range<int> ofSrcLine{"Source lines", dsMinSourceLine, minSrcLine, maxSrcLine};
Range<int> ofSrcLoc{"Source locations", dsMinSourceLocation, minSrcLoc, maxSrcLoc};
Range<int> ofRcvLine{"Receiver lines", dsMinReceiverLine, minRcvLine, maxRcvLine};
Range<int> ofRcvLoc{"Receiver locations", dsMinReceiverLocation, minRcvLoc, maxRcvLoc};
Range<int> ofCmpLine{"CMP lines", dsMinCmpLine, minCMPLine, maxCMPLine};
Range<int> ofCmpLoc{"CMP locations", dsMinCmpLocation, minCMPLoc, maxCMPLoc};
Range<int> ofFieldFile{"Field files", dsMinFieldFile, minFFID, maxFFID};
Range<float> ofOffset{"Offsets", dsMinOffset, minOffset, maxOffset};

/// Those that a summary tells.
Range<int>* const kGeometry[] = {&ofSrcLine, &ofSrcLoc, &ofRcvLine, &ofRcvLoc, &ofCmpLine, &ofCmpLoc};

template <typename Value>
void store(const Range<Value>& range, int type, GeneralSeisDataOrg* org) {
  SetDSProperty(range.property, type, gUnknownUnits, &range.smallest, org);
  SetDSProperty(range.property + 1, type, gUnknownUnits, &range.largest, org);
}

}  // namespace

IndexValues indexValues(const TraceInfo& header) {
  const auto whole = [&](int property) {
    int value = 0;
    GetTraceProperty(property, longIntType, gUnknownUnits, &value, &header);
    return value;
  };
  IndexValues values{whole(trCmpLine),      whole(trCmpLocation),      whole(trSourceLine), whole(trSourceLocation),
                     whole(trReceiverLine), whole(trReceiverLocation), whole(trFieldFile),  0.0F};
  GetTraceProperty(trOffset, singleFloatType, gUnknownUnits, &values.offset, &header);
  return values;
}

void defineKeys(IndexFile* indxFileInfo) {
  constexpr struct {
    const char* name;
    const char* description;
    int property;
  } kKeys[] = {{"File", "Sequential File", 0},      {"Trace Byte", "Trace Byte Position", 0},
               {"Record", "Sequential Record", 0},  {"Trace", "Sequential Trace in Record", 0},
               {"CMP Line", "CMP Line", trCmpLine}, {"CMP Location", "CMP Location", trCmpLocation}};
  filekeys* key = indxFileInfo->keys;
  for (const auto& [name, description, property] : kKeys) {
    copyText(key->keyName, name);
    copyText(key->keyDescription, description);
    key->trPropertyType = property;
    key->typeOfKey = longIntType;
    ++key;
  }
}

void setMinMax(IndexFile* /*indxFileInfo*/, int traceCount, int cmpLine, int srcLine, int rcvLine, int cmpLoc,
               int srcLoc, int rcvLoc, float offset, int fieldFile) {
  if (traceCount == 0) {
    for (Range<int>* range : kGeometry) range->clear();
    ofFieldFile.clear();
    ofOffset.clear();
  }
  ofCmpLine.take(cmpLine);
  ofSrcLine.take(srcLine);
  ofRcvLine.take(rcvLine);
  ofCmpLoc.take(cmpLoc);
  ofSrcLoc.take(srcLoc);
  ofRcvLoc.take(rcvLoc);
  ofOffset.take(offset);
  if (!ofFieldFile.begun) return ofFieldFile.take(fieldFile);
  if (isNothing(fieldFile)) return;
  minFFID = std::min(fieldFile, minCMPLoc);
  maxFFID = std::max(fieldFile, maxCMPLoc);
}

void setHeaderMinMax(IndexFile* indxFileInfo) {
  for (const Range<int>* range : kGeometry) store(*range, longIntType, &indxFileInfo->gSeisOrg);
  store(ofFieldFile, longIntType, &indxFileInfo->gSeisOrg);
  store(ofOffset, singleFloatType, &indxFileInfo->gSeisOrg);
}

void tellRanges() {
  for (const Range<int>* range : kGeometry)
    if (range->begun) console_printf("%s from %d to %d.", range->name, range->smallest, range->largest);
  if (ofOffset.begun)
    console_printf("%s from %g to %g.", ofOffset.name, static_cast<double>(minOffset), static_cast<double>(maxOffset));
}
