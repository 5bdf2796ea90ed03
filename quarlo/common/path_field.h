/// A directory or a file name in a record of settings.
#pragma once

#include <cstddef>

constexpr std::size_t PATH_FIELD = 256;
using PathField = char[PATH_FIELD];
