/// What is in a folder.
#pragma once

#include <filesystem>
#include <vector>

/// The paths of what is in a folder, in no order. Of one that cannot be read, or can no longer be read halfway, what
/// was read before.
std::vector<std::filesystem::path> pathsIn(const std::filesystem::path& folder);
