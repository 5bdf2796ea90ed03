#include "quarlo/openfile.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string_view>

#include "libkyr/folder.h"
#include "quarlo/tapelib/sharefolder.h"

namespace {

namespace fs = std::filesystem;

constexpr struct {
  std::string_view ending;
  const char* script;
} kKinds[] = {
    {".tpf", "tape-image.qs"}, {".sgy", "segy.qs"}, {".segy", "segy.qs"}, {".sgd", "segd.qs"},
    {".segd", "segd.qs"},      {".kyr", "file.qs"}, {".idx", "file.qs"},  {".tap", "cartridge.qs"},
};

std::string endingOf(const fs::path& path) {
  std::string ending = path.extension().string();
  for (char& letter : ending)
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  return ending;
}

bool hasDrives(const fs::path& folder) {
  return std::ranges::any_of(
      pathsIn(folder), [](const fs::path& path) { return path.extension() == ".drive"; });
}

/// A folder of the user's with one drive, in which the cartridge lies; empty where that cannot be written.
fs::path folderWithDrive(const fs::path& cartridge) {
  fs::path folder = userShareFolder("drives");
  if (folder.empty()) return folder;
  std::error_code failed;
  fs::create_directories(folder, failed);
  std::ofstream drive(folder / "opened.drive");
  drive << "cartridge = " << cartridge.string() << '\n';
  drive.close();
  return drive ? folder : fs::path();
}

bool useDrivesOf(const fs::path& cartridge) {
  const fs::path beside = cartridge.parent_path();
  const fs::path folder = hasDrives(beside) ? beside : folderWithDrive(cartridge);
  return !folder.empty() && setenv("QUARLO_VIRTUAL_DRIVES", folder.c_str(), 1) == 0;
}

}  // namespace

std::string openingScript(const std::string& path, std::string* reason) {
  std::error_code unknown;
  const std::string ending = endingOf(path);
  const auto* const kind = std::ranges::find(kKinds, ending, [](const auto& each) { return each.ending; });
  if (!fs::exists(path, unknown))
    *reason = "there is no such file";
  else if (kind == std::end(kKinds))
    *reason = "no dialog is for files of this kind (.tpf, .tap, .sgy, .segy, .sgd, .segd, .kyr, .idx)";
  else if (std::string script = findShared("open", kind->script); !script.empty()) {
    if (ending != ".tap" || useDrivesOf(path)) return script;
    *reason = "a drive for it cannot be written to " + userShareFolder("drives");
  } else
    *reason = std::string("the program's own file ") + kind->script + " is missing";
  return "";
}
