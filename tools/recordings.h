/// Test recordings: datasets of known signals, as "kyrtool record" makes them of a text. Its form is described in the
/// manual page.
#pragma once

#include <iosfwd>
#include <string>

#include "libkyr/datasetfile.h"

namespace recordings {

/// Makes a recording; arguments and answer as of kyrtext::make.
std::string make(std::istream& in, const std::string& name, const std::string& path, const DatasetFile::Say& say);

}  // namespace recordings
