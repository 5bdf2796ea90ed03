#include <vector>

#include "resources/dialogs.h"

namespace {

std::vector<DLG_RES> allDialogs() {
  std::vector<DLG_RES> all;
  for (const auto& topic :
       {kShellDialogs, kProgressDialogs, kDriveDialogs, kTapeDialogs, kCopyDialogs, kSegyDialogs, kSegdDialogs,
        kReformatDialogs, kMergeDialogs, kIndexDialogs, kDumpDialogs, kInstrumentDialogs, kReportDialogs, kTextDialogs})
    all.insert(all.end(), topic.begin(), topic.end());
  return all;
}

}  // namespace

const RESOURCES* quarloResources() {
  static const std::vector<DLG_RES> dialogs = allDialogs();
  static const RESOURCES resources = {kQuarloMenus.data(), kQuarloMenus.size(), dialogs.data(), dialogs.size(),
                                      quarloIcon};
  return &resources;
}
