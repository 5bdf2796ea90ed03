/// What a tape does not tell before its end: the part of a parameter dialog that the field formats share.
#pragma once

#include <array>
#include <limits>

#include "quarlo/tapelib/dialogs/blockdialog.h"
#include "quarlo/tapelib/frame/formatblocks.h"

constexpr int kTapeControls = 3;

/// The card; its controls have the numbers from `first`. What the two counts are called stands in tapeblocks.h, too.
constexpr auto tapeCountsCard(int first) {
  constexpr int kColumns = 8;
  return std::array{
      ui::card("Input from tape"),
      ui::grid(2),
      ui::label("Re~cords at most:"),
      ui::edit(first, "most-records", kColumns, 0, "More than these end the run, which then says so"),
      ui::label("Traces a record at ~most:"),
      ui::edit(first + 1, "most-traces", kColumns, 0, "0: as the headers say"),
      ui::endOf(),
      ui::check(first + 2, "one-file", "A sin~gle tape file", 0,
                "Reading ends behind it; otherwise at the end of the tapes"),
      ui::endOf(),
  };
}

/// Binds the card's controls to a block's counts.
inline void bindTapeCounts(BlockDialog* dialog, int first, KyrTapeCounts* counts) {
  constexpr int kLargest = std::numeric_limits<int>::max();
  dialog->number(first, &counts->records, 1, kLargest)
      .number(first + 1, &counts->traces, 0, kLargest)
      .flag(first + 2, &counts->oneFile);
}
