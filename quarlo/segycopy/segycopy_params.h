/// The settings of a SEG Y copy.
#pragma once

#include "quarlo/tapelib/dialogs/path_field.h"
#include "quarlo/tapelib/formats/tracekey.h"

constexpr int kMaxTypedPoints = 10;

/// A range limit by polygon. The primary key is x, the secondary y.
struct PolyParams {
  PathField dir;  ///< directory of the polygon file and of the log
  PathField file;
  int numPoints;
  int polyType;  ///< LIMIT_SENSE
  int type;      ///< POLYGON_SOURCE
  double primary[kMaxTypedPoints];
  double secondary[kMaxTypedPoints];
  int primByte;
  int primType;
  int secByte;
  int secType;
};

/// A range limit by a list of values.
struct ListParams {
  PathField dir;  ///< directory of the list file and of the log
  PathField file;
  int listType;  ///< LIMIT_SENSE
  int primByte;
  int primType;
  bool useSec;  ///< the list also holds a secondary value
  int secByte;
  int secType;
};

/// Whether what lies inside is kept or dropped.
enum LIMIT_SENSE : int { LS_INCLUSION = 1, LS_EXCLUSION = 2 };
enum POLYGON_SOURCE : int { PS_TYPED = 1, PS_FILE = 2 };
/// Values of SgyCopyParams::limitType; any but the polygon's means a list.
enum LIMIT_TYPE : int { LT_LIST = 1, LT_POLYGON = 2 };

struct SgyCopyParams {
  bool rangeLimit;
  int limitType;  ///< LIMIT_TYPE
  bool sort;
  PathField sortDir;  ///< directory of the temporary files
  PathField sortFile;
  int sortPrimByte;
  int sortPrimType;
  int sortSecByte;
  int sortSecType;
  bool useTertiary;
  int sortTerByte;
  int sortTerType;
  bool keepSortFile;
  bool reverseSort;
  bool reportFFIDs;
  bool multipleIn;      ///< every "*.sgy" file of the input directory, or every SEG Y file on the input tapes
  bool concatInputs;    ///< with multipleIn: one output for all
  bool multipleOut;     ///< volumes of bytesPerPart bytes; counts as off while multipleIn is on
  double bytesPerPart;  ///< bytes
  int recordByte;       ///< key whose change marks where a volume may end
  int recordType;
  PolyParams polyParams;
  ListParams listParams;
};

/// The settings in force. A job reads them; only a typed polygon's `dir` and the point count of a polygon file are
/// written by it.
extern SgyCopyParams SgyParams;

/// Sets the defaults; the current directory becomes that of the temporary files.
void segyInit();

inline bool limitsByPolygon(const SgyCopyParams& params) { return params.limitType == LT_POLYGON; }
/// True when the range limit in force looks at a secondary key.
inline bool limitHasSecondary(const SgyCopyParams& params) {
  return limitsByPolygon(params) || params.listParams.useSec;
}
HeaderKey primaryLimitKey(const SgyCopyParams& params);
HeaderKey secondaryLimitKey(const SgyCopyParams& params);
