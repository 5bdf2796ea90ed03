#include "quarlo/segycopy/segycopy_keys.h"

#include <algorithm>
#include <vector>

#include "quarlo/tapelib/console.h"

namespace {

struct NamedKey {
  const char* name;
  HeaderKey key;
};

std::vector<NamedKey> keysInUse() {
  const SgyCopyParams& params = SgyParams;
  std::vector<NamedKey> keys;
  if (params.rangeLimit) {
    keys.push_back({"primary range limit", primaryLimitKey(params)});
    if (limitHasSecondary(params)) keys.push_back({"secondary range limit", secondaryLimitKey(params)});
  }
  if (params.sort) {
    keys.push_back({"primary sort", {params.sortPrimByte, params.sortPrimType}});
    keys.push_back({"secondary sort", {params.sortSecByte, params.sortSecType}});
    if (params.useTertiary) keys.push_back({"tertiary sort", {params.sortTerByte, params.sortTerType}});
  } else if (params.reportFFIDs) {
    keys.push_back({"field file", kFieldFileKey});
  }
  if (splitsByKey()) keys.push_back({"record", {params.recordByte, params.recordType}});
  return keys;
}

}  // namespace

bool splitsByKey() { return SgyParams.multipleOut && !SgyParams.multipleIn && !SgyParams.sort; }

std::optional<int> bytesForKeys() {
  int needed = 0;
  for (const auto& [name, key] : keysInUse()) {
    // end() of an absurd position would overflow.
    if (key.byte < 1 || key.byte > kTraceHeaderBytes || valueBytes(key.type) == 0 || key.end() > kTraceHeaderBytes) {
      console_printf("  *** The %s key (byte %d, %s) does not lie within the %d bytes of a trace header.", name,
                     key.byte, valueBytes(key.type) > 0 ? DataTypes[key.type] : "unknown type", kTraceHeaderBytes);
      return std::nullopt;
    }
    needed = std::max(needed, key.end());
  }
  return needed;
}
