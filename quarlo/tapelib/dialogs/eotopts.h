/// The options of both drive selections for the end of a tape: unload it, load the next one, wait how long.
#pragma once

#include "quarlo/tapelib/tlv_fcn.h"
#include "xvt/xvt.h"

/// Working copies of a unit's options while a dialog is open, and their controls (DRV_UNLOAD_AT_EOT and those behind
/// it).
class EndOfTapeOptions {
 public:
  /// Takes the options from a unit, whose wait of 0 first becomes the usual one, and shows them.
  void load(WINDOW dialog, UnitStruct* unit);
  /// Carries out a check box or the wait field. @return whether the event was one of theirs
  bool handle(WINDOW dialog, const EVENT& event);
  void store(UnitStruct* unit) const;
  /// Whether store would change anything.
  bool differFrom(const UnitStruct& unit) const;

 private:
  /// Each option makes sense only with those before it.
  void enable(WINDOW dialog) const;

  bool unloadAtEot_ = false;
  bool autoLoader_ = false;
  int timeout_ = 0;  // minutes
};

/// Fills a list with the drives as getDriveList has just found them, one row each.
/// @return false when a row could not be added
bool fillDriveList(WINDOW dialog, int control, const UnitStruct* units, int drives);

/// What came of a selection of drives. None: OK without one, which stored the options.
enum class DriveAnswer { Cancelled, None, Chosen };

constexpr const char* kNoDriveChosen = "No drive was chosen; the options are kept.";

/// Whether there is a drive to open. That OK left none, and options only, is a line on the console.
bool tookDrive(DriveAnswer answer);

/// Says in a selection that a drive is wanted.
void askForDrive(WINDOW dialog);

/// The note for a machine without tape drives.
void sayNoDrives();
