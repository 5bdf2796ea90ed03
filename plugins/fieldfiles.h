/// Which field files of an input are read: the part of a parameter dialog that the field formats share.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

#include "quarlo/tapelib/dialogs/blockdialog.h"
#include "quarlo/tapelib/frame/formatblocks.h"

/// Several pieces of a dialog's table as one.
template <std::size_t... N>
constexpr std::array<DLG_ITEM, (N + ...)> joinedItems(const std::array<DLG_ITEM, N>&... pieces) {
  std::array<DLG_ITEM, (N + ...)> all{};
  std::size_t at = 0;
  ((std::copy(pieces.begin(), pieces.end(), all.begin() + at), at += N), ...);
  return all;
}

/// The card; its controls have the numbers from `first`.
constexpr auto fieldFilesCard(int first) {
  constexpr int kNumberColumns = 8;
  constexpr int kListColumns = 30;
  return std::array{
      ui::card("Field files"),
      ui::row(),
      ui::check(first, "file-limits", "Only ~between", 0, "Both numbers are excluded"),
      ui::edit(first + 1, "files-above", kNumberColumns),
      ui::label("and"),
      ui::edit(first + 2, "files-below", kNumberColumns),
      ui::endOf(),
      ui::grid(2),
      ui::label("~Leave out:"),
      ui::edit(first + 3, "files-left-out", kListColumns, 0, "At most 16 field file numbers"),
      ui::endOf(),
      ui::endOf(),
  };
}

/// Binds the card's controls to a block's choice.
inline void bindFieldFiles(BlockDialog* dialog, int first, KyrFieldFiles* files) {
  constexpr int kLargest = 999'999'999;
  dialog->flag(first, &files->hasLimits)
      .number(first + 1, &files->above, -1, kLargest)
      .number(first + 2, &files->below, 0, kLargest)
      .numbers(first + 3, files->leftOut, KYR_FIELD_FILES, &files->leftOutCount);
}

/// The limits can be typed where they count.
inline void followFieldFiles(WINDOW dialog, int first, const KyrFieldFiles& files) {
  enableControls(dialog, {first + 1, first + 2}, files.hasLimits != 0);
}
