// Layout and placement: no display is needed.
#include <gtest/gtest.h>

#include "xvt/layout.h"
#include "xvt/placement.h"

namespace {

using namespace xvt;

const Spacing kSpacing(16);

Cell leaf(ITEM_KIND kind, int width, int height, int baseline, Growth wide = Growth::none) {
  Cell cell;
  cell.kind = kind;
  cell.natural = {width, height};
  cell.baseline = baseline;
  cell.wide = wide;
  return cell;
}

Cell container(ITEM_KIND kind, std::vector<Cell> children, int columns = 1) {
  Cell cell;
  cell.kind = kind;
  cell.columns = columns;
  cell.children = std::move(children);
  return cell;
}

int width(const Cell& cell) { return cell.place.right - cell.place.left; }
int height(const Cell& cell) { return cell.place.bottom - cell.place.top; }

TEST(Layout, LabelsAndFieldsOfARowStandOnOneBaseline) {
  Cell row = container(IK_ROW, {leaf(IK_LABEL, 40, 16, 12), leaf(IK_EDIT, 100, 30, 19)});
  measure(row, kSpacing);
  EXPECT_EQ(row.natural.height, 30);
  arrange(row, RCT{0, 0, 30, row.natural.width}, kSpacing);
  EXPECT_EQ(row.children[0].place.top + 12, row.children[1].place.top + 19);
  EXPECT_EQ(row.children[1].place.left, 40 + kSpacing.beside);
}

TEST(Layout, ColumnsOfAGridAlignAndTheEagerOneTakesTheRoom) {
  Cell grid = container(IK_GRID,
                        {leaf(IK_LABEL, 40, 16, 12), leaf(IK_EDIT, 100, 30, 19, Growth::eager),
                         leaf(IK_LABEL, 90, 16, 12), leaf(IK_EDIT, 60, 30, 19)},
                        2);
  measure(grid, kSpacing);
  EXPECT_EQ(grid.natural.width, 90 + kSpacing.beside + 100);
  arrange(grid, RCT{0, 0, grid.natural.height, grid.natural.width + 55}, kSpacing);
  EXPECT_EQ(grid.children[1].place.left, grid.children[3].place.left);
  EXPECT_EQ(width(grid.children[1]), 155);
  EXPECT_EQ(width(grid.children[3]), 155);
  EXPECT_EQ(width(grid.children[0]), 90);
}

TEST(Layout, ASpanningCellWidensTheColumnThatGrows) {
  Cell wide = leaf(IK_EDIT, 300, 30, 19, Growth::eager);
  wide.span = 2;
  Cell grid = container(IK_GRID, {leaf(IK_LABEL, 40, 16, 12), leaf(IK_EDIT, 100, 30, 19, Growth::eager), wide}, 2);
  measure(grid, kSpacing);
  arrange(grid, RCT{0, 0, grid.natural.height, grid.natural.width}, kSpacing);
  EXPECT_EQ(grid.natural.width, 300);
  EXPECT_EQ(width(grid.children[0]), 40);
  EXPECT_EQ(width(grid.children[2]), 300);
}

TEST(Layout, CardsSideBySideAreEquallyTallAndHoldTheirContents) {
  const auto card = [](int lines) {
    std::vector<Cell> contents{leaf(IK_LABEL, 50, 16, 12)};
    for (int line = 0; line < lines; ++line) contents.push_back(leaf(IK_CHECK, 120, 24, 16));
    Cell cell = container(IK_CARD, std::move(contents));
    cell.headed = true;
    return cell;
  };
  Cell row = container(IK_ROW, {card(2), card(5)});
  measure(row, kSpacing);
  arrange(row, RCT{0, 0, row.natural.height, row.natural.width + 100}, kSpacing);
  EXPECT_EQ(height(row.children[0]), height(row.children[1]));
  EXPECT_EQ(row.children[1].place.right, row.natural.width + 100);
  for (const Cell& one : row.children)
    for (std::size_t at = 1; at < one.children.size(); ++at) {
      EXPECT_GE(one.children[at].place.top, one.place.top + kSpacing.card_height);
      EXPECT_LE(one.children[at].place.bottom, one.place.bottom - kSpacing.card_height);
      EXPECT_GE(one.children[at].place.left, one.place.left + kSpacing.card_width);
    }
}

Cell dialog() {
  Cell list = leaf(IK_LIST, 200, 150, 14, Growth::eager);
  list.tall = Growth::eager;
  list.least = {200, 60};
  Cell buttons = container(IK_BUTTONS, {leaf(IK_PUSH, 40, 30, 19), leaf(IK_PUSH, 110, 30, 19)});
  return container(IK_COLUMN, {list, buttons, leaf(IK_STATUS, 120, 28, 18)});
}

TEST(Layout, TheStatusLineRunsAlongTheEdgeAndButtonsAreEqual) {
  Cell root = dialog();
  measureDialog(root, kSpacing);
  arrangeDialog(root, root.natural, kSpacing);
  const Cell& status = root.children[2];
  EXPECT_EQ(status.place.left, 0);
  EXPECT_EQ(status.place.bottom, root.natural.height);
  EXPECT_EQ(width(status), root.natural.width);
  const Cell& buttons = root.children[1];
  EXPECT_EQ(width(buttons.children[0]), width(buttons.children[1]));
  EXPECT_EQ(buttons.children[1].place.right, root.natural.width - kSpacing.margin);
}

TEST(Layout, AListTakesMoreRoomAndGivesItBack) {
  Cell root = dialog();
  measureDialog(root, kSpacing);
  arrangeDialog(root, {root.natural.width + 50, root.natural.height + 70}, kSpacing);
  EXPECT_EQ(height(root.children[0]), 220);
  EXPECT_EQ(width(root.children[0]), root.natural.width + 50 - 2 * kSpacing.margin);
  arrangeDialog(root, root.least, kSpacing);
  EXPECT_EQ(height(root.children[0]), 60);
  EXPECT_EQ(root.natural.height - root.least.height, 90);
}

bool overlap(const RCT& one, const RCT& other) {
  return one.left < other.right && other.left < one.right && one.top < other.bottom && other.top < one.bottom;
}

TEST(Placement, WindowsStandBesideEachOtherAsLongAsThereIsRoom) {
  const Extent screen{1600, 1000};
  std::vector<RCT> taken;
  for (const Extent size : {Extent{400, 60}, {620, 300}, {500, 500}, {380, 190}, {400, 430}}) {
    const PNT place = placeBeside(screen, taken, size, PNT{8, 8}, 8);
    const RCT now{place.v, place.h, place.v + size.height, place.h + size.width};
    for (const RCT& other : taken) EXPECT_FALSE(overlap(now, other));
    EXPECT_GE(place.v, 0);
    EXPECT_LE(now.bottom, screen.height);
    EXPECT_LE(now.right, screen.width);
    taken.push_back(now);
  }
}

TEST(Placement, AFullScreenGivesAStaircaseThatStaysOnTheScreen) {
  const Extent screen{800, 600};
  std::vector<RCT> taken;
  for (int window = 0; window < 5; ++window) {
    const PNT place = placeBeside(screen, taken, {600, 400}, PNT{8, 8}, 8);
    for (const RCT& other : taken) EXPECT_FALSE(other.top == place.v && other.left == place.h);
    EXPECT_LE(place.v + 400, 600);
    EXPECT_LE(place.h + 600, 800);
    taken.push_back(RCT{place.v, place.h, place.v + 400, place.h + 600});
  }
}

TEST(Placement, AModalBoxDoesNotHideItsParentNorLeaveTheScreen) {
  const RCT parent{300, 300, 500, 600};
  const PNT inside = placeOver({1600, 1000}, parent, {200, 100}, 8);
  EXPECT_EQ(inside.v, 350);
  EXPECT_EQ(inside.h, 350);
  const PNT same = placeOver({1600, 1000}, parent, {300, 200}, 8);
  EXPECT_GT(same.v, parent.top);
  EXPECT_GT(same.h, parent.left);
  const PNT corner = placeOver({1600, 1000}, RCT{900, 1500, 1000, 1600}, {700, 500}, 8);
  EXPECT_EQ(corner.v, 500);
  EXPECT_EQ(corner.h, 900);
}

}  // namespace
