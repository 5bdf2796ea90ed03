/// Everything that a handle can stand for, and the one table that knows which handles are alive.
#pragma once

#include <memory>
#include <unordered_map>

namespace xvt {

/// What a handle stands for. Shared: the registry holds it while the handle is alive, and whoever is working with it
/// holds it a little longer.
class Object {
 public:
  Object() = default;
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  virtual ~Object() = default;

  /// The number that the program knows it by, 0 before it was entered.
  long handle() const { return handle_; }

 private:
  friend class Registry;
  long handle_ = 0;
};

/// Handles to objects. A number is never given twice in a run, so a handle that outlives its object finds nothing.
class Registry {
 public:
  static Registry& instance();

  /// Gives the object a handle of its own.
  long enter(const std::shared_ptr<Object>& object) { return enterAs(object, next_++); }
  /// Gives it a handle that the program knows beforehand (TASK_WIN).
  long enterAs(const std::shared_ptr<Object>& object, long handle);
  /// The handle is dead from now on.
  void leave(long handle) { objects_.erase(handle); }
  /// The living object behind a handle, if it is a T.
  template <typename T = Object>
  std::shared_ptr<T> find(long handle) const {
    const auto found = objects_.find(handle);
    return found == objects_.end() ? nullptr : std::dynamic_pointer_cast<T>(found->second);
  }

 private:
  std::unordered_map<long, std::shared_ptr<Object>> objects_;
  long next_ = 2;  // 0 is no handle at all, 1 is the task window
};

}  // namespace xvt
