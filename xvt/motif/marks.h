/// The marks of check boxes and radio buttons and the arrow of option lists: antialiased pictures drawn in code.
#pragma once

#include <X11/Xutil.h>
#include <Xm/Xm.h>

#include <map>
#include <tuple>

#include "xvt/motif/palette.h"

namespace xvt {

struct ImageCloser {
  void operator()(XImage* image) const { XDestroyImage(image); }
};

enum class Mark { check, radio, arrow };

class Marks {
 public:
  Marks(Display* display, int size, const Palette& palette) : display_(display), size_(size), palette_(palette) {}
  ~Marks();
  Marks(const Marks&) = delete;
  Marks& operator=(const Marks&) = delete;

  /// A square picture of size() pixels on a ground of colour `ground` (a pixel of a true-colour screen).
  Pixmap picture(Mark mark, bool set, bool enabled, Pixel ground);
  int size() const { return size_; }

 private:
  Display* display_;
  int size_;
  Palette palette_;
  std::map<std::tuple<Mark, bool, bool, Pixel>, Pixmap> pictures_;
};

}  // namespace xvt
