#include "libkyr/seisorg.h"

#include "libkyr/byteorder.h"
#include "libkyr/link.h"
#include "libkyr/properties.h"
#include "libkyr/propertyvalue.h"

namespace {

unsigned char* wordOf(GeneralSeisDataOrg* org, int property) { return org->bytes + seisOrgOffset(property); }

}  // namespace

GeneralSeisDataOrg newSeisOrg() {
  GeneralSeisDataOrg org{};
  for (int property = 0; property < kDatasetPropertyCount; ++property)
    if (const auto entry = datasetProperty(property); entry && !isCountProperty(property))
      storeLe32(wordOf(&org, property), nullWord(*entry));
  return org;
}

int SetDSProperty(int property, int type, int units, const void* value, GeneralSeisDataOrg* org) {
  const auto entry = datasetProperty(property);
  if (!entry || org == nullptr) return kyrBadCall;
  const auto word = wordFromValue(*entry, type, units, value);
  if (!word) return kyrBadCall;
  storeLe32(wordOf(org, property), *word);
  return kyrOk;
}

int GetDSProperty(int property, int type, int units, void* value, const GeneralSeisDataOrg* org) {
  const auto entry = datasetProperty(property);
  if (!entry || org == nullptr) return failedValue(type, value);
  return valueFromWord(*entry, loadLe32(org->bytes + seisOrgOffset(property)), type, units, value);
}
