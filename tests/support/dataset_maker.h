/// Datasets for tests, made in one call.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "libkyr/datasets.h"

struct DatasetFacts {
  int type = kAnySeismicType;
  int samples = 2;
  float interval = 0.002F;
  int places = 0;  ///< of traces in a record, where they are more than `traces`
};

/// @param fill makes a trace; false leaves its place unwritten
inline void makeDataset(const std::string& path, int records, int traces, const DatasetFacts& facts,
                        const std::function<bool(int record, int trace, TraceInfo* header, float* samples)>& fill) {
  const ProcessRecordPtr process(NewProcessRecord());
  Link link;
  SetNumberOfOutputs(process.get(), 1);
  NewOutputSeismicFile(&link, process.get(), path.c_str(), 0, facts.type, 0, std::max(traces, facts.places));
  SetDatasetProperty(process.get(), link, dsRecords, longIntType, gUnknownUnits, &records);
  SetDatasetProperty(process.get(), link, dsSamples, longIntType, gUnknownUnits, &facts.samples);
  SetDatasetProperty(process.get(), link, dsSampleInterval, singleFloatType, gUnknownUnits, &facts.interval);
  ASSERT_EQ(EndInit(process.get()), kyrOk);
  std::vector<float> samples(static_cast<std::size_t>(facts.samples));
  for (int record = 1; record <= records; ++record)
    for (int trace = 1; trace <= traces; ++trace)
      if (TraceInfo header{}; fill(record, trace, &header, samples.data()))
        TracePut(process.get(), link, record, trace, samples.data(), &header);
  ASSERT_EQ(CloseFile(process.get(), link), kyrOk);
}
