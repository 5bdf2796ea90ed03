/// The dialogs' tables by topic, one source file each, and their sum.
#pragma once

#include <cstddef>
#include <span>

#include "xvt/resource.h"

extern const std::span<const DLG_RES> kShellDialogs;       ///< main panel, About box
extern const std::span<const DLG_RES> kProgressDialogs;    ///< progress, error options
extern const std::span<const DLG_RES> kDriveDialogs;       ///< selection of input and output drives
extern const std::span<const DLG_RES> kTapeDialogs;        ///< control, spacing, continuation, tape position
extern const std::span<const DLG_RES> kCopyDialogs;        ///< copy and its parameters, verify
extern const std::span<const DLG_RES> kSegyDialogs;        ///< SEG Y copy settings
extern const std::span<const DLG_RES> kSegdDialogs;        ///< SEG D copy settings
extern const std::span<const DLG_RES> kReformatDialogs;    ///< data reformat
extern const std::span<const DLG_RES> kMergeDialogs;       ///< dataset merge
extern const std::span<const DLG_RES> kIndexDialogs;       ///< file scan
extern const std::span<const DLG_RES> kDumpDialogs;        ///< tape dump, file dump
extern const std::span<const DLG_RES> kInstrumentDialogs;  ///< instrument tests
extern const std::span<const DLG_RES> kReportDialogs;      ///< the other reports on datasets

extern const std::span<const DLG_RES> kTextDialogs;  ///< of the windows that show text

extern const std::span<const MENU_RES> kQuarloMenus;

unsigned quarloIcon(double across, double down);

/// Everything above, for xvt_res_use.
const RESOURCES* quarloResources();

/// One dialog from its items.
template <std::size_t N>
constexpr DLG_RES dialogOf(int id, const char* name, const char* title, const DLG_ITEM (&items)[N]) {
  return {id, name, title, items, N};
}
