/// Finding the tape drives of the system, and what they say of themselves.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "quarlo/tapelib/tlv_fcn.h"

/// A tape drive found at start-up.
struct DriveEntry {
  int Adapter;       ///< SCSI host number
  int Id;            ///< SCSI target id
  std::string Name;  ///< vendor and model
};

/// An array of drive entries that owns them.
class wxEntryArray {
 public:
  void Add(std::unique_ptr<DriveEntry> entry) { entries_.push_back(std::move(entry)); }
  /// Inserts before `index`, at the end when there is no such index.
  void Insert(std::unique_ptr<DriveEntry> entry, std::size_t index);
  void RemoveAt(std::size_t index);
  /// Null out of range.
  DriveEntry* Item(std::size_t index) const { return index < entries_.size() ? entries_[index].get() : nullptr; }
  /// Index of an entry of this array, -1 when it is not there.
  int Index(const DriveEntry* entry) const;
  std::size_t Count() const { return entries_.size(); }
  void Clear() { entries_.clear(); }

 private:
  std::vector<std::unique_ptr<DriveEntry>> entries_;
};

extern wxEntryArray DriveEntries;  ///< the drives found, in the order found

/// Fills DriveEntries. @return 1 when the system's list was read, 0 when not
int findDrives();
/// Adds the tape drives of a text in the kernel's form ("Host: scsi0 Channel: 00 Id: 00 Lun: 01" ...) to `entries`.
void parseScsiText(const std::string& text, wxEntryArray& entries);
/// Lists the drives with their present status in unit 0's theDriveList. @return how many
int getDriveList(UnitStruct* aUnit);
/// Fills name, address and list line of the entry whose `device` is set. @return 1, or 0 when there is no such drive
int getScsiAddress(DListStruct* entry, UnitStruct* aUnit);
