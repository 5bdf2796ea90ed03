/// SEG D for fuzz targets.
#pragma once

#include <algorithm>
#include <vector>

/// Two field files of one channel set; the first bytes choose their format and revision
/// and change their headers, the rest stands behind them.
inline std::vector<char> segdRecording(const std::vector<char>& input) {
  constexpr int kCodes[] = {0x15, 0x22, 0x24, 0x36, 0x38, 0x42, 0x44, 0x48, 0x58};
  const auto chosen = static_cast<unsigned char>(input.empty() ? 0 : input[0]);
  const bool isMultiplexed = (chosen & 0x80U) != 0;
  std::vector<char> file(96);
  file[2] = isMultiplexed ? '\0' : '\x80';
  file[3] = static_cast<char>(kCodes[chosen % 9]);
  file[11] = 0x10;
  file[22] = 16;
  file[27] = file[28] = 1;
  file[32 + 10] = static_cast<char>(chosen / 9 % 4);
  const char set[] = {1, 1, 0, 0, 0, 4, 0, 0, 0, 4, 0x10};
  std::ranges::copy(set, file.begin() + 64);
  if (file[42] == 3) file.resize(160);
  for (int i = 0; i < 4 && !isMultiplexed; ++i) {
    file.insert(file.end(), {0, 0, 1, 1, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    file.insert(file.end(), 32, '\x01');
  }
  for (int i = 0; i < 8 && isMultiplexed; ++i) {
    file.insert(file.end(), 8, '\xFF');
    file.insert(file.end(), 16, '\x01');
  }
  file.insert(file.end(), file.begin(), file.end() - 3);
  for (std::size_t i = 1; i + 2 < std::min<std::size_t>(input.size(), 20); i += 3)
    file[(static_cast<unsigned char>(input[i]) * 256U + static_cast<unsigned char>(input[i + 1])) % file.size()] =
        input[i + 2];
  file.insert(file.end(), input.begin() + static_cast<std::ptrdiff_t>(std::min<std::size_t>(input.size(), 20)),
              input.end());
  return file;
}
