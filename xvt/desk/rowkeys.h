/// What keys mean in a list with columns.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "xvt/desk/item.h"

namespace xvt {

/// Arrows, pages and ends move the selection; letters lead to the next row that begins with what was typed.
class RowKeys {
 public:
  /// The row that a key leads to; nothing when it is no such key or leads nowhere.
  std::optional<int> rowFor(Key key, const BaseItem& list);

 private:
  std::optional<int> rowTyped(char letter, const BaseItem& list, int now);

  std::string typed_;
  std::chrono::steady_clock::time_point last_;
};

}  // namespace xvt
