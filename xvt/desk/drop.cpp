#include "xvt/drop.h"

#include <algorithm>
#include <utility>

#include "xvt/desk/desk.h"
#include "xvt/desk/dialog.h"

namespace xvt {

namespace {

/// What a button is being pressed with.
struct Dropped {
  const std::string* path = nullptr;
  bool taken = false;
};
Dropped dropped;

/// In force for one press.
class Press {
 public:
  explicit Press(const std::string& path) : before_(std::exchange(dropped, {&path, false})) {}
  ~Press() { dropped = before_; }
  Press(const Press&) = delete;
  Press& operator=(const Press&) = delete;

 private:
  Dropped before_;
};

/// How far a point is from a rectangle; 0 inside.
long distance(PNT from, const RCT& to) {
  const long across = std::max({0, to.left - from.h, from.h - to.right});
  const long down = std::max({0, to.top - from.v, from.v - to.bottom});
  return across * across + down * down;
}

}  // namespace

std::vector<std::shared_ptr<BaseItem>> BaseDialog::fileButtons() const {
  std::vector<std::shared_ptr<BaseItem>> found;
  if (isDying() || !isVisible() || desk().blockerOf(*this)) return found;
  std::ranges::copy_if(items_, std::back_inserter(found),
                       [](const auto& item) { return item->takesFile() && item->isVisible() && item->isSensitive(); });
  return found;
}

void BaseDialog::takeFiles(const std::vector<std::string>& files, PNT where) {
  auto buttons = fileButtons();
  const auto next = [where](const auto& item) { return distance(where, item->outerRect()); };
  if (files.size() == 1 && !buttons.empty()) buttons = {*std::ranges::min_element(buttons, {}, next)};
  for (std::size_t at = 0; at < files.size(); ++at) {
    if (buttons.empty() || (at >= buttons.size() && (buttons.back()->line().flags & IF_FILES) == 0))
      return desk().bell();
    const Press press(files[at]);
    if (!buttons[std::min(at, buttons.size() - 1)]->activate() || isDying()) return desk().bell();
  }
}

}  // namespace xvt

const char* xvt_drop_take_path() {
  return xvt::dropped.path != nullptr && !std::exchange(xvt::dropped.taken, true) ? xvt::dropped.path->c_str()
                                                                                  : nullptr;
}
