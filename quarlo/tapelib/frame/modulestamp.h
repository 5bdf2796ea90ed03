/// What a format module says of the headers that it was built with. Records of theirs cross between module and program
/// by their addresses: where the two have different ones, either reads what the other never wrote. This header is C
/// and C++.
#pragma once

/// To be raised by every change of the public headers that the sizes below do not show: a member that means something
/// else, another virtual function.
enum { KYR_INTERFACE = 1 };

struct KyrModuleStamp {
  int interface;     ///< KYR_INTERFACE of the headers
  unsigned records;  ///< what the sizes of the records in them come to; 0 in C, which has calls alone (modulecalls.h)
};

#ifdef __cplusplus
#include <cstddef>
#include <initializer_list>

#include "libkyr/datasets.h"
#include "libkyr/source.h"
#include "quarlo/tapelib/dialogs/blockdialog.h"
#include "quarlo/tapelib/frame/formatblocks.h"
#include "quarlo/tapelib/tlv_fcn.h"
#include "xvt/resource.h"

constexpr unsigned kyrSum(std::initializer_list<std::size_t> sizes) {
  unsigned sum = 1;
  for (const std::size_t size : sizes) sum = sum * 31 + static_cast<unsigned>(size);
  return sum;
}

constexpr KyrModuleStamp kKyrStamp = {KYR_INTERFACE, kyrSum({sizeof(DLG_ITEM),
                                                             sizeof(DLG_RES),
                                                             sizeof(EVENT),
                                                             sizeof(WIN_DEF),
                                                             sizeof(FILE_SPEC),
                                                             sizeof(ProcessRecord),
                                                             sizeof(UnitStruct),
                                                             sizeof(ProgrStruct),
                                                             sizeof(Link),
                                                             sizeof(TraceInfo),
                                                             sizeof(GeneralSeisDataOrg),
                                                             sizeof(SourceFormat),
                                                             sizeof(BlockDialog),
                                                             sizeof(BlockDialog::File),
                                                             sizeof(BlockDialog::Choice),
                                                             sizeof(RealField),
                                                             sizeof(KyrSegyInput),
                                                             sizeof(KyrSegyOutput),
                                                             sizeof(KyrSegdInput),
                                                             sizeof(KyrDatasetInput)})};
#endif
