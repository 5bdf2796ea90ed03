#include "plugins/segy/description.h"

#include <vector>

#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/formats/segyformat_file.h"

std::string whyNoDescription(const std::string& path) {
  SegyFormat format;
  std::vector<std::string> messages;
  if (loadSegyFormat(fileSpecOf(path), &format, &messages)) return "";
  return messages.empty() ? "This file cannot be read: " + path : messages.front();
}
