#include "xvt/base/urilist.h"

#include <unistd.h>

#include <array>
#include <charconv>
#include <optional>

namespace xvt {

namespace {

std::string hostName() {
  std::array<char, 256> name{};
  return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

/// With each "%41" made the byte that it stands for; nothing where that is none or a zero.
std::optional<std::string> decoded(std::string_view text) {
  std::string result;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '%') {
      result += text[at];
      continue;
    }
    unsigned char byte = 0;
    const std::string_view digits = text.substr(at + 1, 2);
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), byte, 16);
    if (digits.size() != 2 || error != std::errc{} || end != digits.data() + 2 || byte == 0) return std::nullopt;
    result += static_cast<char>(byte);
    at += 2;
  }
  return result;
}

/// "file:///home/x", "file://localhost/home/x", "file:/home/x".
std::optional<std::string> pathOf(std::string_view address) {
  constexpr std::string_view kScheme = "file:";
  if (!address.starts_with(kScheme)) return std::nullopt;
  address.remove_prefix(kScheme.size());
  if (address.starts_with("//")) {
    address.remove_prefix(2);
    const std::size_t slash = address.find('/');
    const std::string_view where = address.substr(0, slash);
    if (slash == std::string_view::npos || (!where.empty() && where != "localhost" && where != hostName()))
      return std::nullopt;
    address.remove_prefix(slash);
  }
  return address.starts_with('/') ? decoded(address) : std::nullopt;
}

}  // namespace

std::vector<std::string> pathsOf(std::string_view uriList) {
  std::vector<std::string> paths;
  while (!uriList.empty()) {
    const std::size_t end = uriList.find_first_of(std::string_view("\r\n\0", 3));
    if (auto path = pathOf(uriList.substr(0, end))) paths.push_back(std::move(*path));
    uriList.remove_prefix(end == std::string_view::npos ? uriList.size() : end + 1);
  }
  return paths;
}

}  // namespace xvt
