#include "xvt/desk/document.h"

#include "xvt/base/utf8.h"
#include "xvt/desk/desk.h"

namespace xvt {

namespace {

/// What scripts call a window: its title in small letters with "-" for blanks.
std::string scriptName(const std::string& title) {
  std::string name = title;
  for (char& letter : name) {
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
    if (letter == ' ') letter = '-';
  }
  return name;
}

}  // namespace

std::string BaseDocument::takeDefinition(const WIN_DEF& definition) {
  std::string title = validUtf8(definition.title != nullptr ? definition.title : "");
  name_ = scriptName(title);
  client_ = {definition.rct.right - definition.rct.left, definition.rct.bottom - definition.rct.top};
  return title;
}

void BaseDocument::take(int id, const std::shared_ptr<TextField>& field) {
  Registry::instance().enter(field);
  fields_[id] = field;
}

std::shared_ptr<TextField> BaseDocument::textField(int id) const {
  const auto found = fields_.find(id);
  return found == fields_.end() ? nullptr : found->second;
}

std::shared_ptr<TextField> BaseDocument::firstText() const {
  return fields_.empty() ? nullptr : fields_.begin()->second;
}

void BaseDocument::dropParts() {
  for (const auto& [id, field] : fields_) Registry::instance().leave(field->handle());
}

void BaseDocument::setClient(Extent client) {
  if (client.width == client_.width && client.height == client_.height) return;
  client_ = client;
  EVENT event;
  event.type = E_SIZE;
  event.size.width = client.width;
  event.size.height = client.height;
  tell(event);
  event = EVENT{};
  event.type = E_UPDATE;
  tell(event);
}

}  // namespace xvt
