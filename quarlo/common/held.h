/// A state that is put back whatever happens.
#pragma once

/// Holds a flag for as long as it lives.
class Held {
 public:
  explicit Held(bool* heldFlag) : flag_(heldFlag) { *flag_ = true; }
  ~Held() { *flag_ = false; }
  Held(const Held&) = delete;
  Held& operator=(const Held&) = delete;

 private:
  bool* flag_;
};
