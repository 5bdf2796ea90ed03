// Which drives there are, from the kernel's list, from sysfs, and as the selection dialogs list them.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "quarlo/tapelib/driver/fault_driver.h"
#include "quarlo/tapelib/driver/st_driver.h"
#include "quarlo/tapelib/drives.h"
#include "quarlo/tapelib/unix_fcn.h"
#include "tests/device/bench.h"
#include "tests/support/test_files.h"
#include "tests/support/test_toolkit.h"

namespace {

std::string device(const std::string& host, const std::string& id, const std::string& name, const std::string& type) {
  return "Host: scsi" + host + " Channel: 00 Id: " + id + " Lun: 01\n  " + name + "\n  Type:   " + type +
         "                ANSI  SCSI revision: 05\n";
}

const std::string kTape1 = device("0", "04", "Vendor: VIRTUAL  Model: TAPE-1           Rev: 0100", "Sequential-Access");
const std::string kDisk = device("0", "01", "Vendor: DISKS    Model: SOMETHING        Rev: 0100", "Direct-Access    ");
const std::string kTape12 =
    device("12", "15", "Vendor: HP       Model: Ultrium 1-SCSI   Rev: E32D", "Sequential-Access");

std::string listed(const wxEntryArray& entries) {
  std::string text;
  for (std::size_t i = 0; i < entries.Count(); ++i) {
    const DriveEntry* entry = entries.Item(i);
    text += std::to_string(entry->Adapter) + ":" + std::to_string(entry->Id) + " " + entry->Name + "\n";
  }
  return text;
}

TEST(Discovery, KernelList) {
  wxEntryArray entries;
  parseScsiText("Attached devices:\n" + kTape1 + kDisk + kTape12, entries);
  EXPECT_EQ(listed(entries), "0:4 VIRTUAL TAPE-1\n1:15 HP Ultrium 1-SCSI\n");  // of a host number one digit is read
  entries.Clear();
  for (std::size_t cut = 0; cut < kTape1.size(); ++cut) parseScsiText(kTape1.substr(0, cut), entries);
  for (std::size_t i = 0; i < entries.Count(); ++i) EXPECT_EQ(entries.Item(i)->Name, "VIRTUAL TAPE-1");
}

TEST(Discovery, EntryArray) {
  wxEntryArray entries;
  for (const int id : {1, 3}) entries.Add(std::make_unique<DriveEntry>(DriveEntry{0, id, "D"}));
  entries.Insert(std::make_unique<DriveEntry>(DriveEntry{0, 2, "D"}), 1);
  EXPECT_EQ(listed(entries), "0:1 D\n0:2 D\n0:3 D\n");
  EXPECT_EQ(entries.Index(entries.Item(2)), 2);
  entries.RemoveAt(0);
  entries.RemoveAt(9);
  EXPECT_EQ(listed(entries), "0:2 D\n0:3 D\n");
  EXPECT_EQ(entries.Item(2), nullptr);
  EXPECT_EQ(entries.Index(nullptr), -1);
}

class Sources : public testing::Test {
 protected:
  ~Sources() override { setTapeDriver(nullptr); }
  int find() {
    setTapeDriver(std::make_unique<StDriver>(folder_.path("proc/scsi"), folder_.path("class")));
    return findDrives();
  }
  void kernelList(const std::string& text) {
    std::filesystem::create_directories("proc/scsi");
    writeFile(folder_.path("proc/scsi/scsi"), text);
  }
  void sysfsTape(const std::string& name, const std::string& address, const std::string& vendor,
                 const std::string& model) {
    const std::string target = "devices/" + address;
    std::filesystem::create_directories(target);
    std::filesystem::create_directories("class/" + name);
    std::filesystem::create_directory_symlink("../../" + target, "class/" + name + "/device");
    writeFile(target + "/vendor", vendor);
    writeFile(target + "/model", model);
  }
  TestFolder folder_;
};

TEST_F(Sources, NoListNoDrives) {
  EXPECT_EQ(find(), 0);
  kernelList("");
  EXPECT_EQ(find(), 0);
  kernelList("Attached devices: none\n");
  EXPECT_EQ(find(), 0);
  EXPECT_EQ(DriveEntries.Count(), 0U);
}

TEST_F(Sources, SysfsWhereTheKernelHasNoList) {
  sysfsTape("nst1", "12:0:6:1", "HP      \n", "Ultrium 3-SCSI  \n");
  sysfsTape("nst1a", "12:0:6:1/again", "HP      \n", "Ultrium 3-SCSI  \n");
  sysfsTape("nst0", "0:0:4:0", "VIRTUAL \n", "TAPE-1          \n");
  sysfsTape("nst7", "nonsense", "V\n", "M\n");
  EXPECT_EQ(find(), 1);
  EXPECT_EQ(listed(DriveEntries), "0:4 VIRTUAL TAPE-1\n12:6 HP Ultrium 3-SCSI\n");
  kernelList(kTape1);  // where it has one, that counts
  EXPECT_EQ(find(), 1);
  EXPECT_EQ(listed(DriveEntries), "0:4 VIRTUAL TAPE-1\n");
}

TEST(Discovery, BufferLengthFromTheEnvironment) {
  EXPECT_EQ(bufferLengthFor(nullptr), 32768U);
  EXPECT_EQ(bufferLengthFor("256"), 262144U);
  EXPECT_EQ(bufferLengthFor("64 KiB"), 65536U);
  for (const char* useless : {"", "0", "-5", "big", "-99999999999999999999"})
    EXPECT_EQ(bufferLengthFor(useless), 32768U);
  for (const char* absurd : {"4194304", "2147483647", "99999999999999999999"})
    EXPECT_EQ(bufferLengthFor(absurd), 1U << 30) << absurd;
}

TEST(Discovery, DriveListAndItsBoxes) {
  VirtualBench bench;
  TestToolkit toolkit;
  UnitStruct* units = getDevPtr();
  initIO(units);
  ASSERT_EQ(getDriveList(units), 2);
  const DListStruct* list = units[0].theDriveList;
  EXPECT_STREQ(list[0].device, "/dev/nst0");
  EXPECT_STREQ(list[0].name, "VIRTUAL TAPE-1");
  EXPECT_STREQ(list[0].string, "  0:0   VIRTUAL TAPE-1");
  EXPECT_STREQ(list[1].string, "  1:0   VIRTUAL TAPE-2 (offline)");
  EXPECT_STREQ(list[1].adapter, "1");
  EXPECT_STREQ(list[1].id, "0");
  // A drive that a unit has open is asked through it: a second open would be refused.
  units[0].theListItem = 0;
  tlv_tape_open(units, 0);
  ASSERT_EQ(units[0].state, 1);
  EXPECT_EQ(getDriveList(units), 2);
  EXPECT_EQ(units[0].state, 1);
  tlv_tape_close(units, 0);
  // A drive that answers no address, and one without status, are left out after a box.
  std::vector<TapeFault> faults;
  std::string bad;
  ASSERT_TRUE(parseTapeFaults("address:1:EIO,status:1:EIO", faults, bad));
  setTapeDriver(std::make_unique<FaultDriver>(setTapeDriver(nullptr), faults));
  EXPECT_EQ(getDriveList(units), 0);
  EXPECT_EQ(toolkit.errors, (std::vector<std::string>{"failed to get SCSI ID for device file 'VIRTUAL TAPE-1'",
                                                      "failed to get SCSI status for device file ''"}));
  unInitIO(units);
}

}  // namespace
