#include "xvt/motif/textview/textview.h"

#include <X11/IntrinsicP.h>
#include <Xm/DrawingA.h>

#include <algorithm>
#include <vector>

#include "xvt/motif/textview/textview_impl.h"

namespace xvt {

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds kPaintInterval{33};

/// The side of a pixmap that the server is sure to grant.
constexpr int kLargestSide = 16384;

// ---- what Xt calls

void inputAction(Widget widget, XEvent* event, String*, Cardinal*) {
  guarded(
      "text view",
      [&] {
        if (TextViewImpl* view = TextViewImpl::of(widget)) view->handle(event);
      });
}

void focusHandler(Widget widget, XtPointer, XEvent* event, Boolean*) {
  if (TextViewImpl* view = TextViewImpl::of(widget)) view->focusChanged(event->type == FocusIn);
}

void exposed(Widget widget, XtPointer, XtPointer) {
  guarded(
      "text view",
      [&] {
        if (TextViewImpl* view = TextViewImpl::of(widget)) view->exposed();
      });
}

void resizedByParent(Widget widget, XtPointer, XtPointer) {
  if (TextViewImpl* view = TextViewImpl::of(widget)) view->resized();
}

void destroyed(Widget widget, XtPointer, XtPointer) {
  if (TextViewImpl* view = TextViewImpl::of(widget)) view->widgetGone();
}

/// The input translations stand in front of those that a manager widget has for its gadgets.
XtTranslations inputTranslations(Widget parent) {
  static XtAppContext known = nullptr;
  static XtTranslations table = nullptr;
  if (XtAppContext context = XtWidgetToApplicationContext(parent); context != known) {
    static char name[] = "XvtTextInput";
    static XtActionsRec actions[] = {{name, inputAction}};
    XtAppAddActions(context, actions, XtNumber(actions));
    table = XtParseTranslationTable(
        "<KeyDown>: XvtTextInput()\n"
        "<BtnDown>: XvtTextInput()\n"
        "<BtnUp>: XvtTextInput()\n"
        "<BtnMotion>: XvtTextInput()");
    known = context;
  }
  return table;
}

}  // namespace

// ---- small owners -----------------------------------------------------------------------------------------------

ViewColor::ViewColor(Display* display, const char* name) : display_(display) {
  const int screen = DefaultScreen(display);
  owned_ = XftColorAllocName(display, DefaultVisual(display, screen), DefaultColormap(display, screen), name, &color_);
  if (!owned_) color_.pixel = BlackPixel(display, screen);
}

ViewColor::~ViewColor() {
  const int screen = DefaultScreen(display_);
  if (owned_) XftColorFree(display_, DefaultVisual(display_, screen), DefaultColormap(display_, screen), &color_);
}

void ViewTimer::start(Widget widget, unsigned long milliseconds) {
  if (id_ == 0) id_ = XtAppAddTimeOut(XtWidgetToApplicationContext(widget), milliseconds, fired, this);
}

void ViewTimer::stop() {
  if (id_ != 0) XtRemoveTimeOut(id_);
  id_ = 0;
}

void ViewTimer::fired(XtPointer self, XtIntervalId*) {
  auto* timer = static_cast<ViewTimer*>(self);
  timer->id_ = 0;
  guarded("text view", timer->work_);
}

// ---- birth, geometry --------------------------------------------------------------------------------------------

std::vector<TextViewImpl*>& TextViewImpl::all() {
  static std::vector<TextViewImpl*> views;
  return views;
}

TextViewImpl* TextViewImpl::of(Widget widget) {
  XtPointer data = nullptr;
  XtVaGetValues(widget, XmNuserData, &data, nullptr);
  return static_cast<TextViewImpl*>(data);
}

TextViewImpl::TextViewImpl(Widget parent, const char* name, const TextViewStyle& style)
    : display_(XtDisplay(parent)),
      metrics_(display_, style.font),
      background_(display_, style.background),
      foreground_(display_, style.foreground),
      selectionBackground_(display_, style.selectionBackground),
      selectionForeground_(display_, style.selectionForeground),
      focusRing_(display_, style.focusRing),
      paintTimer_([this] { paintPending(); }),
      dragTimer_([this] { autoscroll(); }) {
  setFont(style.font, style.leading);
  createWidget(parent, name);
  all().push_back(this);
}

TextViewImpl::~TextViewImpl() {
  std::erase(all(), this);
  if (widget == nullptr) return;
  Widget mine = widget;
  widgetGone();
  XtVaSetValues(mine, XmNuserData, nullptr, nullptr);
  XtDestroyWidget(mine);
}

void TextViewImpl::createWidget(Widget parent, const char* name) {
  widget = XtVaCreateWidget(name, xmDrawingAreaWidgetClass, parent, XmNuserData, this, XmNbackground,
                            background_.pixel(), XmNborderWidth, 0, XmNshadowThickness, 0, XmNmarginWidth, 0,
                            XmNmarginHeight, 0, XmNresizePolicy, XmRESIZE_NONE, XmNtraversalOn, True, XmNnavigationType,
                            XmTAB_GROUP, XmNwidth, 100, XmNheight, 100, nullptr);
  XtOverrideTranslations(widget, inputTranslations(parent));
  XtAddEventHandler(widget, FocusChangeMask, False, focusHandler, nullptr);
  XtAddCallback(widget, XmNexposeCallback, xvt::exposed, nullptr);
  XtAddCallback(widget, XmNresizeCallback, resizedByParent, nullptr);
  XtAddCallback(widget, XmNdestroyCallback, destroyed, nullptr);
  resized();
}

void TextViewImpl::widgetGone() {
  paintTimer_.stop();
  dragTimer_.stop();
  destroyBuffer();
  widget = nullptr;
}

void TextViewImpl::setFont(XftFont* font, int leading) {
  metrics_ = TextMetrics(display_, font);
  lineHeight_ = std::max(1, leading + font->ascent + font->descent);
  widest = 0;
  for (std::size_t number = 0; number < store.count(); ++number)
    widest = std::max(widest, metrics_.width(store.line(number)));
  destroyBuffer();
  moveOrigin(originLine, offset);
  changed();
}

void TextViewImpl::resized() {
  Dimension width = 1;
  Dimension height = 1;
  XtVaGetValues(widget, XmNwidth, &width, XmNheight, &height, nullptr);
  if (width == width_ && height == height_) return;
  width_ = width;
  height_ = height;
  moveOrigin(originLine, offset);
  changed();
}

bool TextViewImpl::moveOrigin(long line, long pixels) {
  line = std::clamp(line, 0L, std::max(0L, lineCount() - viewLines()));
  pixels = std::clamp(pixels, 0L, std::max(0L, long{widest} - viewWidth()));
  if (line == originLine && pixels == offset) return false;
  originLine = line;
  offset = pixels;
  changed();
  return true;
}

// ---- painting ---------------------------------------------------------------------------------------------------

void TextViewImpl::changed() {
  if (dirty_) return;
  dirty_ = true;
  if (widget == nullptr || !XtIsRealized(widget)) return;
  const auto wait = std::chrono::ceil<std::chrono::milliseconds>(painted_ + kPaintInterval - Clock::now());
  paintTimer_.start(widget, static_cast<unsigned long>(std::max<std::int64_t>(0, wait.count())));
}

void TextViewImpl::paintIfDue() {
  if (dirty_ && Clock::now() - painted_ >= kPaintInterval) paintNow();
}

void TextViewImpl::paintNow() {
  if (widget == nullptr || !XtIsRealized(widget)) return;
  ensureBuffer();
  XSetForeground(display_, gc_, background_.pixel());
  XFillRectangle(display_, buffer_, gc_, 0, 0, static_cast<unsigned>(width_), static_cast<unsigned>(height_));
  const TextRange selected = selection();
  int top = marginY();
  for (auto number = static_cast<std::size_t>(originLine); number < store.count() && top < height_ - marginY();
       ++number, top += lineHeight_) {
    paintSelectionOf(number, top, selected);
    paintLine(number, top, selected);
  }
  if (focused_) paintFocusRing();
  dirty_ = false;
  painted_ = Clock::now();
  copyToWindow();
  XFlush(display_);
}

void TextViewImpl::exposed() {
  if (dirty_ || buffer_ == 0)
    paintNow();
  else
    copyToWindow();
}

void TextViewImpl::ensureBuffer() {
  if (buffer_ != 0 && bufferWidth_ == width_ && bufferHeight_ == height_) return;
  destroyBuffer();
  const int screen = DefaultScreen(display_);
  bufferWidth_ = width_;
  bufferHeight_ = height_;
  buffer_ = XCreatePixmap(display_, XtWindow(widget), static_cast<unsigned>(std::min(width_, kLargestSide)),
                          static_cast<unsigned>(std::min(height_, kLargestSide)),
                          static_cast<unsigned>(DefaultDepth(display_, screen)));
  draw_ = XftDrawCreate(display_, buffer_, DefaultVisual(display_, screen), DefaultColormap(display_, screen));
  XRectangle inside{static_cast<short>(marginX()), static_cast<short>(marginY()),
                    static_cast<unsigned short>(viewWidth()), static_cast<unsigned short>(viewHeight())};
  XftDrawSetClipRectangles(draw_, 0, 0, &inside, 1);
  XGCValues values{};
  values.graphics_exposures = False;
  gc_ = XCreateGC(display_, buffer_, GCGraphicsExposures, &values);
}

void TextViewImpl::destroyBuffer() {
  if (buffer_ == 0) return;
  XftDrawDestroy(draw_);
  XFreeGC(display_, gc_);
  XFreePixmap(display_, buffer_);
  buffer_ = 0;
}

void TextViewImpl::copyToWindow() {
  XCopyArea(display_, buffer_, XtWindow(widget), gc_, 0, 0, static_cast<unsigned>(bufferWidth_),
            static_cast<unsigned>(bufferHeight_), 0, 0);
}

void TextViewImpl::paintFocusRing() {
  XSetForeground(display_, gc_, focusRing_.pixel());
  XDrawRectangle(display_, buffer_, gc_, 0, 0, static_cast<unsigned>(width_ - 1), static_cast<unsigned>(height_ - 1));
}

void TextViewImpl::paintSelectionOf(std::size_t number, int top, TextRange selected) {
  if (selected.empty() || number < selected.begin.line || number > selected.end.line) return;
  const std::string_view line = store.line(number);
  const long begin = number == selected.begin.line ? metrics_.xOf(line, selected.begin.byte) : 0;
  const long end =
      number == selected.end.line ? metrics_.xOf(line, selected.end.byte) : std::max(begin, offset + viewWidth());
  const long left = std::clamp(begin - offset, 0L, long{viewWidth()});
  const long right = std::clamp(end - offset, 0L, long{viewWidth()});
  XSetForeground(display_, gc_, selectionBackground_.pixel());
  XFillRectangle(display_, buffer_, gc_, static_cast<int>(marginX() + left), top, static_cast<unsigned>(right - left),
                 static_cast<unsigned>(std::min(lineHeight_, marginY() + viewHeight() - top)));
}

void TextViewImpl::paintLine(std::size_t number, int top, TextRange selected) {
  std::vector<XftCharSpec> plain;
  std::vector<XftCharSpec> marked;
  const auto baseline = static_cast<short>(top + metrics_.font()->ascent);
  metrics_.walk(store.line(number), [&](std::size_t byte, std::size_t, char32_t code, long x, int wide) {
    if (x + wide > offset && code != U' ') {
      const TextPosition place{number, byte};
      auto& into = place >= selected.begin && place < selected.end ? marked : plain;
      into.push_back({code, static_cast<short>(marginX() + x - offset), baseline});
    }
    return x + wide < offset + viewWidth();
  });
  for (const auto& [specs, color] : {std::pair{&plain, &foreground_}, std::pair{&marked, &selectionForeground_}})
    if (!specs->empty())
      XftDrawCharSpec(draw_, color->xft(), metrics_.font(), specs->data(), static_cast<int>(specs->size()));
}

// ---- the public face --------------------------------------------------------------------------------------------

TextView::TextView(Widget parent, const char* name, const TextViewStyle& style)
    : impl_(std::make_unique<TextViewImpl>(parent, name, style)) {}
TextView::~TextView() = default;

Widget TextView::widget() const { return impl_->widget; }
void TextView::setFont(XftFont* font, int leading) { impl_->setFont(font, leading); }

void TextView::setGeometry(int x, int y, int width, int height) {
  if (impl_->widget == nullptr) return;
  const auto side = [](int pixels) { return static_cast<Dimension>(std::clamp(pixels, 1, kLargestSide)); };
  XtConfigureWidget(impl_->widget, static_cast<Position>(x), static_cast<Position>(y), side(width), side(height), 0);
  impl_->resized();
}

void TextView::insert(long index, std::string_view text) {
  TextViewImpl& view = *impl_;
  if (index < 0 || index > view.lineCount()) index = view.lineCount();
  view.store.insert(static_cast<std::size_t>(index), text);
  view.widest = std::max(view.widest, view.metrics().width(text));
  view.lineInserted(static_cast<std::size_t>(index));
  if (index <= view.originLine + view.viewLines()) view.changed();
}

void TextView::clear() {
  impl_->clearSelection();
  impl_->store.clear();
  impl_->widest = 0;
  impl_->originLine = impl_->offset = 0;
  impl_->changed();
}

long TextView::count() const { return impl_->lineCount(); }

std::string_view TextView::line(long index) const {
  return impl_->store.line(index < 0 ? SIZE_MAX : static_cast<std::size_t>(index));
}

int TextView::viewWidth() const { return impl_->viewWidth(); }
int TextView::viewHeight() const { return impl_->viewHeight(); }
long TextView::viewLines() const { return impl_->viewLines(); }
int TextView::lineHeight() const { return impl_->lineHeight_; }
int TextView::textWidth(std::string_view text) const { return impl_->metrics().width(text); }
int TextView::widestLine() const { return impl_->widest; }
long TextView::originLine() const { return impl_->originLine; }
int TextView::offset() const { return static_cast<int>(impl_->offset); }
void TextView::scrollTo(long line, int offset) { impl_->moveOrigin(line, offset); }
void TextView::setScrolledCallback(TextViewScrolled callback) { impl_->scrolled = std::move(callback); }

void TextView::setMenuCallback(std::function<void(XButtonEvent&)> callback) { impl_->menu = std::move(callback); }

void TextView::select(long line, std::size_t begin, std::size_t end) {
  const auto number = static_cast<std::size_t>(line);
  impl_->select({{number, begin}, {number, end}});
}

long TextView::selection(std::size_t* begin, std::size_t* end) const {
  const TextRange range = impl_->selection();
  return partOfFirstLine(impl_->store, range, begin, end);
}

void TextView::selectAll() { impl_->selectAll(); }
void TextView::clearSelection() { impl_->clearSelection(); }
bool TextView::hasSelection() const { return !impl_->selection().empty(); }
std::string TextView::selectedText() const { return textOf(impl_->store, impl_->selection()); }
bool TextView::copy() { return impl_->copyToClipboard(impl_->lastTime()); }

void TextView::paintIfDue() { impl_->paintIfDue(); }
void TextView::paintNow() { impl_->paintNow(); }
void TextView::paintAllPending() {
  for (TextViewImpl* view : TextViewImpl::all()) view->paintPending();
}

}  // namespace xvt
