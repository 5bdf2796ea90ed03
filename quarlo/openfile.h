/// A file that the program is started with, as file managers do.
#pragma once

#include <string>

/// The script that opens a file of this kind (by the ending of its name) in the dialog that is for it; it gets the
/// file's path as its variable "input". For a cartridge the drives of its folder become the program's, or one that
/// holds it where there are none.
/// @param path absolute @param reason receives why there is no script
/// @return the script's path; empty with a reason
std::string openingScript(const std::string& path, std::string* reason);
