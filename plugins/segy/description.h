/// Format descriptions that a user chooses.
#pragma once

#include <string>

/// Why a file is no description that can be used; empty when it is one.
std::string whyNoDescription(const std::string& path);
