/// The task window: the menu bar and a quiet line below it.
#pragma once

#include <map>

#include "xvt/motif/shell_window.h"

namespace xvt {

class TaskWindow final : public ShellWindow {
 public:
  /// Makes and shows it; E_CREATE is the caller's to send.
  void create(EVENT_HANDLER event_handler);

  std::string name() const override { return "task"; }
  void showBusy(bool busy) override;

  bool hasItem(int command) const { return items_.contains(command); }
  void setItemChecked(int command, bool checked);
  void setItemEnabled(int command, bool enabled);
  bool isItemChecked(int command) const;
  bool isItemEnabled(int command) const;
  Widget item(int command) const { return items_.at(command).widget; }
  const MENU_RES* menuTable() const { return table_; }
  /// A shortcut typed in `window`; true when it was one.
  bool shortcut(KeySym key, unsigned modifiers, ShellWindow& window);
  /// Carries the command out: itself if it is a standard one, through the handler otherwise.
  void command(int number);

 protected:
  void arrangeContents(Extent size) override;

 private:
  struct Item {
    Widget widget = nullptr;
    bool check = false;
    bool checked = false;
    bool enabled = true;
    KeySym key = 0;
    unsigned modifiers = 0;
  };
  void createMenus();
  void createItem(Widget pulldown, const MENU_ITEM& line);
  void createLine();
  void watchHelp(Widget widget, const char* help);

  const MENU_RES* table_ = nullptr;
  Widget bar_ = nullptr;
  Widget heading_ = nullptr;
  Widget line_ = nullptr;
  int line_height_ = 0;
  std::map<int, Item> items_;
};

}  // namespace xvt
