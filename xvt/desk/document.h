/// A document window: its name and the size of its client area.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "xvt/desk/window.h"
#include "xvt/layout/layout.h"

namespace xvt {

class BaseDocument : public virtual BaseWindow {
 public:
  virtual void build(const WIN_DEF& definition) = 0;
  virtual void openAt(const WIN_DEF& definition) = 0;

  std::string name() const override { return name_; }
  RCT clientRect() const override { return RCT{0, 0, client_.height, client_.width}; }
  std::shared_ptr<TextField> textField(int id) const override;
  std::shared_ptr<TextField> firstText() const override;

 protected:
  /// Takes title, name and size from the definition. @return the title as it can be shown
  std::string takeDefinition(const WIN_DEF& definition);
  void take(int id, const std::shared_ptr<TextField>& field);
  const std::map<int, std::shared_ptr<TextField>>& fields() const { return fields_; }
  void dropParts() override;
  void forgetClient() { client_ = {}; }
  /// The client area has this size from now on; tells the handler of a new one.
  void setClient(Extent client);

 private:
  std::map<int, std::shared_ptr<TextField>> fields_;
  std::string name_;
  Extent client_;
};

}  // namespace xvt
