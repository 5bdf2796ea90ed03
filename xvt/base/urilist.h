/// What file managers hand over: addresses of files.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace xvt {

/// The absolute paths that a text/uri-list names (lines end in CR LF; "#" begins a remark). What is no file, lies on
/// another host, or holds a zero byte is left out.
std::vector<std::string> pathsOf(std::string_view uriList);

}  // namespace xvt
