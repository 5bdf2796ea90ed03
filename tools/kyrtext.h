/// Datasets as text: what kyrtool shows and makes. The form is described in the manual page.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

#include "libkyr/datasetfile.h"

namespace kyrtext {

/// A whole decimal integer; nothing when that is not all of the text.
std::optional<int> parseInt(std::string_view text);
/// A float, "inf" and "nan" among them; nothing for one beyond the range of floats, or with anything around it.
std::optional<float> parseFloat(const std::string& text);

/// "unstacked", "stack-2d", "stack-3d", "unknown", "radar".
const char* typeName(int type);
std::optional<int> typeOf(std::string_view name);

/// Sets what "NAME=VALUE" says; NAME is a property's name or its number, VALUE a number or "null".
/// @return an empty text, or what is wrong
std::string setTrace(TraceInfo& info, const std::string& assignment);
std::string setDataset(DatasetFile& file, const std::string& assignment);
/// Whether setDataset could do it in a dataset that exists: all but its counts. @return as setDataset
std::string checkDataset(const std::string& assignment);

/// The lines before the first trace.
void writeHead(std::ostream& out, const DatasetFile& file);
/// A trace's line; with its samples where `samples` is not null.
void writeTrace(std::ostream& out, int record, int trace, const TraceInfo& info, const float* samples, int count);

/// Makes a dataset from a text. @param name what the text is called
/// @return an empty text, or what is wrong, beginning with the file that is to blame; there is no dataset then
std::string make(std::istream& in, const std::string& name, const std::string& path, const DatasetFile::Say& say);

/// Why a call failed, in words; for kyrDiskError errno is asked.
std::string reason(int result);

}  // namespace kyrtext
