#include "quarlo/openfile.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string_view>

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
  std::error_code unreadable;
  return std::ranges::any_of(fs::directory_iterator(folder, unreadable),
                             [](const fs::directory_entry& entry) { return entry.path().extension() == ".drive"; });
}

/// A folder of the user's with one drive, in which the cartridge lies.
fs::path folderWithDrive(const fs::path& cartridge) {
  fs::path folder = userShareFolder("drives");
  std::error_code failed;
  fs::create_directories(folder, failed);
  std::ofstream(folder / "opened.drive") << "cartridge = " << cartridge.string() << '\n';
  return folder;
}

void useDrivesOf(const fs::path& cartridge) {
  const fs::path folder = cartridge.parent_path();
  setenv("QUARLO_VIRTUAL_DRIVES", (hasDrives(folder) ? folder : folderWithDrive(cartridge)).c_str(), 1);
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
    if (ending == ".tap") useDrivesOf(path);
    return script;
  } else
    *reason = std::string("the program's own file ") + kind->script + " is missing";
  return "";
}
