#include "quarlo/segycopy/segycopy_params.h"

#include "libkyr/text.h"
#include "xvt/xvt.h"

SgyCopyParams SgyParams = {};

void segyInit() {
  SgyParams = {};
  SgyParams.limitType = LT_POLYGON;
  DIRECTORY here{};
  if (xvt_fsys_get_dir(&here)) copyText(SgyParams.sortDir, fieldText(here.path));
  copyText(SgyParams.sortFile, "Sort.tmp");
  SgyParams.sortPrimByte = 9;
  SgyParams.sortPrimType = DT_INT32;
  SgyParams.sortSecByte = 13;
  SgyParams.sortSecType = DT_INT32;
  SgyParams.sortTerByte = 1;
  SgyParams.sortTerType = DT_INT32;
  SgyParams.bytesPerPart = 10737418240.0;
  SgyParams.recordByte = 9;
  SgyParams.recordType = DT_INT32;

  PolyParams& polygon = SgyParams.polyParams;
  polygon.numPoints = 4;
  polygon.polyType = LS_INCLUSION;
  polygon.type = PS_FILE;
  polygon.primByte = 193;
  polygon.primType = DT_INT32;
  polygon.secByte = 21;
  polygon.secType = DT_INT32;

  ListParams& list = SgyParams.listParams;
  list.listType = LS_INCLUSION;
  list.primByte = 193;
  list.primType = DT_INT32;
  list.secByte = 21;
  list.secType = DT_INT32;
}

HeaderKey primaryLimitKey(const SgyCopyParams& params) {
  return limitsByPolygon(params) ? HeaderKey{params.polyParams.primByte, params.polyParams.primType}
                                 : HeaderKey{params.listParams.primByte, params.listParams.primType};
}

HeaderKey secondaryLimitKey(const SgyCopyParams& params) {
  return limitsByPolygon(params) ? HeaderKey{params.polyParams.secByte, params.polyParams.secType}
                                 : HeaderKey{params.listParams.secByte, params.listParams.secType};
}
