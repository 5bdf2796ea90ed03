/// The one fence between handlers and whoever calls them: nothing is thrown through a toolkit.
#pragma once

#include <exception>
#include <iostream>

namespace xvt {

/// Runs `work`; what it throws is reported and goes no further.
template <typename Work>
void guarded(const char* where, Work&& work) noexcept {
  try {
    work();
  } catch (const std::exception& error) {
    std::cerr << "xvt: " << where << ": " << error.what() << std::endl;
  } catch (...) {
    std::cerr << "xvt: " << where << ": unknown exception" << std::endl;
  }
}

}  // namespace xvt
