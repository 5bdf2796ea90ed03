/// The task window: the menu bar's items and what they do.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "xvt/desk/window.h"
#include "xvt/resource.h"

namespace xvt {

class BaseTask : public virtual BaseWindow {
 public:
  /// Makes and shows it; E_CREATE is the caller's to send.
  virtual void create(EVENT_HANDLER eventHandler) = 0;

  std::string name() const override { return "task"; }

  bool hasItem(int command) const { return items_.contains(command); }
  void setItemChecked(int command, bool checked);
  void setItemEnabled(int command, bool enabled);
  bool isItemChecked(int command) const { return items_.at(command).checked; }
  bool isItemEnabled(int command) const { return items_.at(command).enabled; }
  const MENU_RES* menuTable() const { return table_; }
  /// A shortcut typed in `window`; true when it was one.
  bool shortcut(Key key, unsigned modifiers, BaseWindow& window);
  /// Carries the command out: itself if it is a standard one, through the handler otherwise.
  void command(int number);

 protected:
  /// Becomes TASK_WIN, with the items of the configuration's menu.
  void enterTask(EVENT_HANDLER eventHandler);
  /// An item has another mark, or is enabled or not from now on.
  virtual void showItem(int) {}

 private:
  struct MenuItem {
    bool checked = false;
    bool enabled = true;
    std::string shortcuts;
  };
  /// Whether the command can be carried out while a dialog may keep input from the task window.
  bool reaches(int number) const;
  const MENU_RES* table_ = nullptr;
  std::map<int, MenuItem> items_;
};

}  // namespace xvt
