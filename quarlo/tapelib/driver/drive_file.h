/// The text file that describes one virtual drive: "NAME.drive" in the folder of virtual drives.
#pragma once

#include <string>
#include <vector>

struct DriveDescription {
  std::string vendor = "VIRTUAL";
  std::string model;  ///< the file's name without its extension when not given
  int host = 0;
  int id = 0;
  int lun = 0;
  std::string cartridge;              ///< path of the .tap file in the drive, "" for none
  std::vector<std::string> magazine;  ///< paths of those that follow it, one at each unload
  bool writeProtect = false;
  bool offline = false;         ///< switched off: there, but never ready
  long long capacity = 0;       ///< bytes of the cartridge's file up to early warning, 0 for no end
  long long reserve = 262144;   ///< bytes from early warning to the physical end
  std::vector<long> badBlocks;  ///< logical block numbers (marks counted) that this drive cannot read
};

/// Reads a drive file; relative cartridge paths are taken from the file's folder. @return false with `problem` set
bool readDriveFile(const std::string& path, DriveDescription& drive, std::string& problem);

/// Writes a drive file for `drive`, paths as they stand. @return 0 or an errno
int writeDriveFile(const std::string& path, const DriveDescription& drive);

/// The drive files of a folder by name order. @return false when there is no such folder
bool findDriveFiles(const std::string& folder, std::vector<std::string>& paths);
