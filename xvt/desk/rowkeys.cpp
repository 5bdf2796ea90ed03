#include "xvt/desk/rowkeys.h"

#include <algorithm>

#include "xvt/base/naturalorder.h"

namespace xvt {

namespace {

constexpr std::chrono::milliseconds kPause{1000};  ///< behind it another word begins

int selectedRow(const BaseItem& list) {
  for (int row = 0; row < list.rowCount(); ++row)
    if (list.isRowSelected(row)) return row;
  return -1;
}

/// The first row that begins so, from row `from` on and round the end.
std::optional<int> rowLike(const std::string& begin, const BaseItem& list, int from) {
  const int count = list.rowCount();
  for (int step = 0; step < count; ++step) {
    const int row = (from + step) % count;
    std::string name = folded(list.rowText(row));
    // Keys come without Shift: both signs stand for the key that has them.
    std::replace(name.begin(), name.end(), '_', '-');
    if (name.starts_with(begin)) return row;
  }
  return std::nullopt;
}

}  // namespace

std::optional<int> RowKeys::rowFor(Key key, const BaseItem& list) {
  const int count = list.rowCount();
  if (count == 0) return std::nullopt;
  const int now = selectedRow(list);
  const int page = std::max(1, list.rowsShown() - 1);
  const auto within = [count](int row) { return std::clamp(row, 0, count - 1); };
  switch (key) {
    case kUpKey:
      return within(now - 1);
    case kDownKey:
    case kPadDownKey:
      return within(now + 1);
    case kPageUpKey:
      return within(now - page);
    case kPageDownKey:
      return within(now + page);
    case kHomeKey:
      return 0;
    case kEndKey:
      return count - 1;
    default:
      return key > ' ' && key <= '~' ? rowTyped(static_cast<char>(key), list, std::max(0, now)) : std::nullopt;
  }
}

std::optional<int> RowKeys::rowTyped(char letter, const BaseItem& list, int now) {
  const auto time = std::chrono::steady_clock::now();
  if (time - last_ > kPause) typed_.clear();
  last_ = time;
  typed_ += letter;
  if (const auto row = rowLike(typed_, list, typed_.size() > 1 ? now : now + 1)) return row;
  // The same letter again: the next one that begins with it.
  const bool same = typed_.find_first_not_of(letter) == std::string::npos;
  return same ? rowLike(std::string(1, letter), list, now + 1) : std::nullopt;
}

}  // namespace xvt
