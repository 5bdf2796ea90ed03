#include "xvt/registry.h"

namespace xvt {

Registry& Registry::instance() {
  static Registry registry;
  return registry;
}

long Registry::enterAs(const std::shared_ptr<Object>& object, long handle) {
  object->handle_ = handle;
  objects_[handle] = object;
  return handle;
}

}  // namespace xvt
