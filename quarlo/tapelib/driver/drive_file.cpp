#include "quarlo/tapelib/driver/drive_file.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string_view>
#include <system_error>
#include <utility>

#include "libkyr/folder.h"

namespace fs = std::filesystem;

namespace {

std::string trimmed(const std::string& text) {
  const auto first = text.find_first_not_of(" \t\r");
  return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

template <class Number>
bool readNumber(std::string_view text, Number low, Number high, Number& value) {
  Number parsed = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), parsed);
  if (error != std::errc() || end != text.data() + text.size() || parsed < low || parsed > high) return false;
  value = parsed;
  return true;
}

bool readFlag(const std::string& text, bool& value) {
  value = text == "yes";
  return text == "yes" || text == "no";
}

bool readNumbers(const std::string& text, std::vector<long>& values) {
  std::istringstream words(text);
  std::string one;
  while (words >> one)
    if (!readNumber(one, 0L, 0x7FFFFFFFL, values.emplace_back())) return false;
  return true;
}

std::string cartridgePath(const fs::path& folder, const std::string& name) {
  return name.empty() ? "" : (folder / name).string();
}

/// One "key = value". @return false when the key is unknown or the value does not suit it
bool readSetting(const fs::path& folder, const std::string& key, const std::string& value, DriveDescription& drive) {
  constexpr long long kMost = 1LL << 60;
  if (key == "vendor") return drive.vendor = value, !value.empty();
  if (key == "model") return drive.model = value, !value.empty();
  if (key == "host") return readNumber(value, 0, 255, drive.host);
  if (key == "id") return readNumber(value, 0, 255, drive.id);
  if (key == "lun") return readNumber(value, 0, 255, drive.lun);
  if (key == "cartridge") return drive.cartridge = cartridgePath(folder, value), true;
  if (key == "magazine") return drive.magazine.push_back(cartridgePath(folder, value)), !value.empty();
  if (key == "write-protect") return readFlag(value, drive.writeProtect);
  if (key == "offline") return readFlag(value, drive.offline);
  if (key == "capacity") return readNumber(value, 0LL, kMost, drive.capacity);
  if (key == "reserve") return readNumber(value, 0LL, kMost, drive.reserve);
  if (key == "bad-blocks") return readNumbers(value, drive.badBlocks);
  return false;
}

}  // namespace

bool readDriveFile(const std::string& path, DriveDescription& drive, std::string& problem) {
  std::error_code unseen;
  std::ifstream in;
  if (fs::is_regular_file(path, unseen)) in.open(path);  // the opening of a pipe waits for its other side
  if (!in.is_open()) {
    problem = "cannot be read";
    return false;
  }
  drive = DriveDescription{};
  drive.model = fs::path(path).stem().string();
  std::string line;
  for (int number = 1; std::getline(in, line); ++number) {
    line = trimmed(line);
    if (line.empty() || line[0] == '#') continue;
    const auto equals = line.find('=');
    if (equals != std::string::npos && readSetting(fs::path(path).parent_path(), trimmed(line.substr(0, equals)),
                                                   trimmed(line.substr(equals + 1)), drive))
      continue;
    problem = "line " + std::to_string(number) + " is not understood: " + line;
    return false;
  }
  return true;
}

int writeDriveFile(const std::string& path, const DriveDescription& drive) {
  const std::string fresh = path + ".new";  // put in place at once, so that nobody reads half a file
  std::ofstream out(fresh);
  out << "vendor = " << drive.vendor << "\nmodel = " << drive.model << "\nhost = " << drive.host
      << "\nid = " << drive.id << "\nlun = " << drive.lun << "\ncartridge = " << drive.cartridge << '\n';
  for (const std::string& next : drive.magazine) out << "magazine = " << next << '\n';
  out << "write-protect = " << (drive.writeProtect ? "yes" : "no") << "\noffline = " << (drive.offline ? "yes" : "no")
      << "\ncapacity = " << drive.capacity << "\nreserve = " << drive.reserve << "\nbad-blocks =";
  for (const long block : drive.badBlocks) out << ' ' << block;
  out << '\n';
  out.close();
  std::error_code error;
  if (!out) return EIO;
  fs::rename(fresh, path, error);
  return error.value();
}

bool findDriveFiles(const std::string& folder, std::vector<std::string>& paths) {
  std::error_code error;
  if (!fs::is_directory(folder, error)) return false;
  for (const fs::path& each : pathsIn(folder))
    if (each.extension() == ".drive") paths.push_back(each.string());
  std::sort(paths.begin(), paths.end());
  return true;
}
