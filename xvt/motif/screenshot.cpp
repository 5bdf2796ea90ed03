/// What is on the screen, as a PNG file.
#include <X11/Xutil.h>
#include <png.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "xvt/motif/application.h"
#include "xvt/motif/geometry.h"
#include "xvt/motif/shell_window.h"
#include "xvt/motif/textview/textview.h"

namespace xvt {

namespace {

using Image = std::unique_ptr<XImage, ImageCloser>;

/// Lets what is due be painted: the server's round trips, Motif's exposures, the text views' timers.
void settleScreen() {
  for (int round = 0; round < 4; ++round) {
    XSync(app().display(), False);
    app().pump().serve(false);
    usleep(10'000);
  }
  TextView::paintAllPending();
  XSync(app().display(), False);
  app().pump().serve(false);
  XSync(app().display(), False);
}

RCT screenRect() {
  Screen* screen = XtScreen(app().shell());
  return RCT{0, 0, HeightOfScreen(screen), WidthOfScreen(screen)};
}

/// The window with its frame, as far as it is on the screen.
RCT windowRect(const ShellWindow& window) {
  RCT frame;
  if (!frameOf(window.shell(), &frame)) return {};
  const RCT screen = screenRect();
  return RCT{std::max(0, frame.top), std::max(0, frame.left), std::min(screen.bottom, frame.bottom),
             std::min(screen.right, frame.right)};
}

png_byte scaledChannel(unsigned long pixel, unsigned long mask) {
  if (mask == 0) return 0;
  const unsigned long lowest = mask & (~mask + 1);
  return static_cast<png_byte>((pixel & mask) / lowest * 255 / (mask / lowest));
}

std::vector<png_byte> pixels(XImage* image) {
  const Visual* visual = DefaultVisual(app().display(), DefaultScreen(app().display()));
  std::vector<png_byte> bytes;
  bytes.reserve(static_cast<std::size_t>(image->width) * static_cast<std::size_t>(image->height) * 3);
  for (int y = 0; y < image->height; ++y)
    for (int x = 0; x < image->width; ++x) {
      const unsigned long pixel = XGetPixel(image, x, y);
      for (const unsigned long mask : {visual->red_mask, visual->green_mask, visual->blue_mask})
        bytes.push_back(scaledChannel(pixel, mask));
    }
  return bytes;
}

/// Writes 8-bit RGB; the simplified interface of libpng keeps its own errors.
probe::Refusal writePng(const std::string& path, XImage* image) {
  png_image png{};
  png.version = PNG_IMAGE_VERSION;
  png.width = static_cast<png_uint_32>(image->width);
  png.height = static_cast<png_uint_32>(image->height);
  png.format = PNG_FORMAT_RGB;
  const std::vector<png_byte> bytes = pixels(image);
  if (png_image_write_to_file(&png, path.c_str(), 0, bytes.data(), 0, nullptr) != 0) return std::nullopt;
  return path + ": " + png.message;
}

}  // namespace

probe::Refusal Application::screenshot(WINDOW window, const std::string& path) {
  auto shown = Registry::instance().find<ShellWindow>(window);
  if (window != NULL_WIN && (!shown || !shown->isVisible())) return "the window is not shown";
  if (shown) shown->raise();
  settleScreen();
  if (shown && (shown->isDying() || !shown->isVisible())) return "the window was closed";
  const RCT area = shown ? windowRect(*shown) : screenRect();
  if (area.right <= area.left || area.bottom <= area.top) return "the window is not on the screen";
  const Image image(XGetImage(display_, DefaultRootWindow(display_), area.left, area.top,
                              static_cast<unsigned>(area.right - area.left),
                              static_cast<unsigned>(area.bottom - area.top), AllPlanes, ZPixmap));
  if (!image) return "the screen cannot be read";
  return writePng(path, image.get());
}

}  // namespace xvt
