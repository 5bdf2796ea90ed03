/// The task window: the menu bar and a quiet line below it.
#pragma once

#include <map>

#include "xvt/desk/task.h"
#include "xvt/motif/shell_window.h"

namespace xvt {

class TaskWindow final : public ShellWindow, public BaseTask {
 public:
  void create(EVENT_HANDLER eventHandler) override;
  /// A popup menu with those lines of the menu bar that are for windows with text.
  Widget createTextMenu(Widget parent);

 protected:
  void arrangeContents(Extent size) override;
  void showItem(int command) override;

 private:
  void createMenus();
  void createItem(Widget pulldown, const MENU_ITEM& line);
  Widget makeItem(Widget pulldown, const MENU_ITEM& line);
  void createLine();
  void watchHelp(Widget widget, const char* help);

  Widget bar_ = nullptr;
  Widget line_ = nullptr;
  int lineHeight_ = 0;
  std::map<int, Widget> items_;
};

}  // namespace xvt
