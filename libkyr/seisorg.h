/// The organisation record: the properties of a whole dataset, as dataset and index files hold them.
#pragma once

#include <cstddef>
#include <cstdint>

/// The kind of data in a dataset.
enum SeisType : int {
  kStackedData = 7,         ///< 2-D stack
  kAnyUnknownSeismic = 10,  ///< seismic data of mixed or unknown type
  kAnySeismicType = 11,     ///< unstacked data; asked for at an opening: whatever is seismic
  brickedTimeStack = 15,    ///< 3-D stack
  kRadarData = 20,          ///< ground-penetrating radar
};

/// The largest count of samples that a trace may have.
constexpr int kMaxSamples = 1 << 28;

/// Bytes of the record.
constexpr std::size_t kSeisOrgSize = 860;
/// Dataset properties have the codes 0 to 214: one 32-bit word each.
constexpr int kDatasetPropertyCount = 215;

/// The record as it stands in files: the word of property p is at byte 4 p, little-endian, a float's bits for a float
/// property. Reached through SetDSProperty and GetDSProperty only. Zero-filled it is a valid one of zeros.
struct GeneralSeisDataOrg {
  unsigned char bytes[kSeisOrgSize];
};

/// Where the word of a property stands in the record.
constexpr std::size_t seisOrgOffset(int property) { return 4 * static_cast<std::size_t>(property); }
static_assert(sizeof(GeneralSeisDataOrg) == kSeisOrgSize && kSeisOrgSize == seisOrgOffset(kDatasetPropertyCount));

/// A record that knows nothing yet: counts are 0, everything else is null.
GeneralSeisDataOrg newSeisOrg();

/// The counts of a dataset.
struct SeisCounts {
  int records = 0;  ///< -1 where nobody knows it yet: traces that come from a tape
  int tracesPerRecord = 0;
  int samples = 0;
};
SeisCounts seisOrgCounts(const GeneralSeisDataOrg& org);
/// Keeps them; the two counts that follow from them are set as well.
void setSeisOrgCounts(GeneralSeisDataOrg* org, const SeisCounts& counts);

/// Stores a dataset property in an organisation record; arguments as for SetTraceProperty (properties.h).
int SetDSProperty(int property, int type, int units, const void* value, GeneralSeisDataOrg* org);
/// Fetches one; arguments as for GetTraceProperty.
int GetDSProperty(int property, int type, int units, void* value, const GeneralSeisDataOrg* org);
