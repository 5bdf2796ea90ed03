/// Which field files of an input a job takes, and the numbers in file names.
#pragma once

#include "libkyr/process.h"

constexpr int kFieldFileListSize = 16;

/// The user's choice of field files, and the settings of vibroseis recordings.
struct MoreParams {
  int itsSegType;
  short itHasMinMaxOn;  ///< only field files between the limits, which are themselves excluded
  int itsFFMin;
  int itsFFMax;
  short itHasListOn;  ///< not the field files of the list
  int itsFFList[kFieldFileListSize];
  short itsCorrFlag;
  short itDoesPhaseComp;
  int itsPilotLength;
  int itsPilotChannel;
  int itsPilotSet;
};

/// Tells from its field file number whether a record is to be passed over; says so on the record's console.
/// @return 1 to skip the record, else 0
int skipThisFile(ProcessRecord* procRecord, const MoreParams* theParams, int fieldFile);

/// The decimal number that begins at the first digit of a file name, at most the largest int; 0 when there is no digit.
int getFFile(const char* fileName);

/// Keeps the hexadecimal digits of a text, in lower case, and drops every other character, in place.
void checkHex(char* str);
