#include "quarlo/tapelib/drives.h"

#include <fcntl.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "libkyr/text.h"
#include "quarlo/tapelib/driver/driver.h"

wxEntryArray DriveEntries;

namespace {

constexpr int kDeviceNumbers = 33;  ///< /dev/nst0 to /dev/nst32 are looked for

}  // namespace

void wxEntryArray::Insert(std::unique_ptr<DriveEntry> entry, std::size_t index) {
  entries_.insert(entries_.begin() + static_cast<std::ptrdiff_t>(std::min(index, entries_.size())), std::move(entry));
}

void wxEntryArray::RemoveAt(std::size_t index) {
  if (index < entries_.size()) entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(index));
}

int wxEntryArray::Index(const DriveEntry* entry) const {
  for (std::size_t i = 0; i < entries_.size(); ++i)
    if (entries_[i].get() == entry) return static_cast<int>(i);
  return -1;
}

namespace {

/// Walks through a text by its labels, field by field.
class TextCutter {
 public:
  explicit TextCutter(const std::string& text) : text_(text) {}
  /// Goes to the next `label`; false when there is none.
  bool cutTo(const char* label) { return reach(text_.find(label, at_)); }
  /// Goes past the next `letter`.
  bool skipPast(char letter) {
    if (!reach(text_.find(letter, at_))) return false;
    ++at_;
    return true;
  }
  std::string take(std::size_t count) const { return text_.substr(at_, count); }
  bool startsWith(const char* words) const { return text_.compare(at_, std::strlen(words), words) == 0; }

 private:
  bool reach(std::size_t found) {
    if (found == std::string::npos) return false;
    at_ = found;
    return true;
  }
  const std::string& text_;
  std::size_t at_ = 0;
};

int decimal(const std::string& digits) { return static_cast<int>(std::strtol(digits.c_str(), nullptr, 10)); }

/// One device of the list, from its "Host:" on. @return false when the text breaks off
bool parseDevice(TextCutter& text, wxEntryArray& entries) {
  DriveEntry entry{};
  if (!text.skipPast('i')) return false;
  entry.Adapter = decimal(text.take(1));  // one digit, also of host numbers that have two
  if (!text.cutTo("Id:") || !text.skipPast(' ')) return false;
  entry.Id = decimal(text.take(2));
  if (!text.cutTo("Vendor:") || !text.skipPast(' ')) return false;
  const std::string vendor(trimText(text.take(8)));
  if (!text.cutTo("Model:") || !text.skipPast(' ')) return false;
  entry.Name = vendor + " " + std::string(trimText(text.take(16)));
  if (!text.cutTo("Type:") || !text.skipPast(' ')) return false;
  if (text.startsWith("  Sequential-Access")) entries.Add(std::make_unique<DriveEntry>(entry));
  return true;
}

}  // namespace

void parseScsiText(const std::string& text, wxEntryArray& entries) {
  TextCutter cutter(text);
  while (cutter.cutTo("Host:") && parseDevice(cutter, entries)) {
  }
}

int findDrives() {
  DriveFacts drives;
  DriveEntries.Clear();
  if (!tapeDriver().listDrives(drives)) return 0;
  if (drives.isText && (drives.text.empty() || drives.text.find("Attached devices: none") != std::string::npos))
    return 0;
  parseScsiText(drives.text, DriveEntries);
  for (const DriveFact& fact : drives.facts)
    DriveEntries.Add(std::make_unique<DriveEntry>(DriveEntry{fact.host, fact.id, fact.name}));
  return 1;
}

int getDriveList(UnitStruct* aUnit) {
  int kept = 0;
  for (int number = 0; number < kDeviceNumbers && kept < kMaxUnits; ++number) {
    DListStruct& entry = aUnit[0].theDriveList[kept];
    copyText(entry.device, "/dev/nst" + std::to_string(number));
    entry.autoLoader = nullptr;
    if (getScsiAddress(&entry, aUnit) == 1) ++kept;
  }
  // What a longer list of before left behind is no drive any more.
  for (int rest = kept; rest < kMaxUnits; ++rest) aUnit[0].theDriveList[rest].device[0] = '\0';
  return kept;
}

namespace {

/// A device asked for its facts: through the unit that has it open, else opened for the moment.
class Enquiry {
 public:
  Enquiry(const DListStruct& entry, const UnitStruct* units) {
    for (int i = 0; i < kMaxUnits && fd_ < 0; ++i)
      if (units[i].fd != 0 && std::strcmp(units[i].devName, entry.device) == 0) fd_ = units[i].fd;
    if (fd_ >= 0) return;
    fd_ = tapeDriver().open(entry.device, O_RDONLY | O_NONBLOCK);
    mine_ = fd_ >= 0;
  }
  ~Enquiry() {
    if (mine_) tapeDriver().close(fd_);
  }
  Enquiry(const Enquiry&) = delete;
  Enquiry& operator=(const Enquiry&) = delete;
  int fd() const { return fd_; }

 private:
  int fd_ = -1;
  bool mine_ = false;
};

int refuse(DListStruct* entry, const char* what) {
  xvt_dm_post_error("failed to get SCSI %s for device file '%s'", what, entry->name);
  entry->name[0] = '\0';
  return 0;
}

}  // namespace

int getScsiAddress(DListStruct* entry, UnitStruct* aUnit) {
  unsigned word = 0;
  mtget status{};
  {
    const Enquiry enquiry(*entry, aUnit);
    if (enquiry.fd() < 0) return 0;
    if (tapeDriver().address(enquiry.fd(), word) < 0) return refuse(entry, "ID");
    if (tapeDriver().status(enquiry.fd(), status) < 0) return refuse(entry, "status");
  }
  const int adapter = static_cast<int>(word >> 24);
  const int id = static_cast<int>(word & 0xFF);
  copyText(entry->adapter, std::to_string(adapter));
  copyText(entry->id, std::to_string(id));
  std::string name = entry->device;  // a drive that came after the start has no other name
  for (std::size_t i = 0; i < DriveEntries.Count(); ++i)
    if (DriveEntries.Item(i)->Adapter == adapter && DriveEntries.Item(i)->Id == id) name = DriveEntries.Item(i)->Name;
  copyText(entry->name, name);
  std::string line = std::string("  ") + entry->adapter + ":" + entry->id + "   " + name;
  if (GMT_DR_OPEN(status.mt_gstat) != 0)
    line += " (offline)";
  else if (GMT_WR_PROT(status.mt_gstat) != 0)
    line += " (wrt-prot)";
  copyText(entry->string, line);
  return 1;
}
