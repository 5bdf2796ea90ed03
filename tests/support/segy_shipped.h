/// The shipped descriptions of SEG Y, and what a trace header of a dataset holds.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "libkyr/properties.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/formats/segyformat_file.h"
#include "tests/support/segy_headers.h"

/// A description from the folder that the test is told (QUARLO_FORMATS).
inline SegyFormat shipped(const char* name) {
  FILE_SPEC file{};
  copyText(file.dir.path, QUARLO_FORMATS);
  copyText(file.name, name);
  SegyFormat format;
  std::vector<std::string> messages;
  EXPECT_TRUE(loadSegyFormat(file, &format, &messages));
  EXPECT_EQ(messages, std::vector<std::string>{});
  return format;
}

inline double property(const TraceInfo& trace, int code) {
  double value = 0;
  EXPECT_EQ(GetTraceProperty(code, doubleFloatType, gUnknownUnits, &value, &trace), 0);
  return value;
}
