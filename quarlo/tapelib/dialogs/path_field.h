/// A directory or a file name in a record of settings.
#pragma once

#include <cstddef>

constexpr std::size_t kPathField = 256;
using PathField = char[kPathField];
