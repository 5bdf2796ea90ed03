/// The console of tests without windows: keeps the lines.
#pragma once

#include <string>
#include <vector>

/// Every line since the last clear().
std::vector<std::string>& consoleLines();
