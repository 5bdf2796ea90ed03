/// Where the items of a dialog go: pure geometry, no pixel of it fixed.
///
/// A dialog is a tree of cells. measure() gives every cell the size that its contents need, arrange() hands the room
/// of the window down the tree. Lines of a row stand on one baseline; the columns of a grid are as wide as their widest
/// cell; room that is left goes to the cells that can use it most.
#pragma once

#include <vector>

#include "xvt/resource.h"
#include "xvt/xvt.h"

namespace xvt {

struct Extent {
  int width = 0;
  int height = 0;
};

/// How eagerly a cell takes room that is left: the most eager of its neighbours share it.
enum class Growth { none, willing, eager };

/// Distances in pixels; they follow the font.
struct Spacing {
  explicit Spacing(int lineHeight);
  int margin;       ///< between a dialog's contents and its edge
  int group;        ///< above and below cards and other groups
  int line;         ///< between lines
  int mark;         ///< between check boxes
  int foot;         ///< above the row of buttons
  int beside;       ///< between neighbours in a row or a grid
  int cards;        ///< between groups side by side
  int heading;      ///< between a card's heading and its frame
  int card_width;   ///< between a card's frame and its contents, left and right
  int card_height;  ///< the same above and below
  int button;       ///< least width of a button at the foot
};

struct Cell {
  ITEM_KIND kind = IK_COLUMN;
  int columns = 1;             ///< of a grid
  int span = 1;                ///< cells of its grid that it takes
  bool fills = true;           ///< is as wide as its column
  Growth wish = Growth::none;  ///< what a container wants beside its contents' growth
  Growth wide = Growth::none;  ///< of a leaf; containers take their contents'
  Growth tall = Growth::none;
  Extent natural;       ///< of a leaf: given; of a container: computed by measure()
  Extent least;         ///< of a leaf: given (0: as natural)
  int baseline = -1;    ///< from the top to the first line's baseline; -1: none
  bool headed = false;  ///< a card whose first child is its heading
  std::vector<Cell> children;
  RCT place;                          ///< computed by arrange(); a card's own frame
  std::vector<int> column_widths;     ///< of a grid
  std::vector<Growth> column_growth;  ///< of a grid
};

/// Computes sizes, growth and baselines from the leaves up.
void measure(Cell& cell, const Spacing& spacing);
/// Places a measured cell and all that is in it.
void arrange(Cell& cell, const RCT& room, const Spacing& spacing);

/// A whole dialog: a column whose status line (if any) runs along the lower edge, outside the margin.
void measureDialog(Cell& root, const Spacing& spacing);

/// The part of a dialog above its buttons and status line, which scrolls in a window that is smaller than its least
/// size.
struct ScrolledPart {
  Extent view;      ///< what is seen of it
  Extent contents;  ///< all of it
};

/// Places of the scrolled part count from its own corner, those of buttons and status line from the window's; without
/// scrolling that is the same. @param bar width of a scroll bar
ScrolledPart arrangeDialog(Cell& root, Extent window, const Spacing& spacing, int bar);

}  // namespace xvt
