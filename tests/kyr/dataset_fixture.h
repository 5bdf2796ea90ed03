/// Datasets of a test: a folder, the console's lines, traces that can be told apart.
#pragma once

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <utility>
#include <vector>

#include "libkyr/datasetheader.h"
#include "libkyr/datasets.h"
#include "tests/support/test_files.h"

struct DatasetCounts {
  int records = 0;
  int traces = 0;
  int samples = 0;
  int recordsPerFile = 0;
};

/// A trace that no other pair of numbers has.
struct TestTrace {
  std::vector<float> samples;
  TraceInfo header{};

  TestTrace(int record, int trace, int count) : samples(static_cast<std::size_t>(count)) {
    const auto number = static_cast<int>(static_cast<unsigned>(record) * 1000U + static_cast<unsigned>(trace));
    std::mt19937 random(static_cast<unsigned>(number));
    for (float& sample : samples) sample = static_cast<float>(random()) / 65536.0F - 32768.0F;
    SetTraceProperty(trFieldFile, longIntType, gUnknownUnits, &number, &header);
    header.words[100] = static_cast<std::uint32_t>(random());
  }
};

class DatasetTest : public testing::Test {
 protected:
  DatasetTest() {
    lines().clear();
    record->consoleLine = [](const char* line) { lines().emplace_back(line); };
  }

  static std::vector<std::string>& lines() {
    static std::vector<std::string> said;
    return said;
  }
  static bool said(const std::string& part) {
    for (const std::string& line : lines())
      if (line.find(part) != std::string::npos) return true;
    return false;
  }

  Link open(const std::string& name, int accepted = kAnySeismicType) const {
    Link link;
    SetNumberOfInputs(record.get(), 1);
    const int result = NewInputFile(&link, record.get(), folder.path(name).c_str(), 0, accepted);
    EXPECT_EQ(result, IsLinkValid(link) ? kyrOk : link.value);
    return link;
  }

  int get(Link link, int property) const {
    int value = -1;
    GetDatasetProperty(record.get(), link, property, longIntType, gUnknownUnits, &value);
    return value;
  }
  int set(Link link, int property, int value) const {
    return SetDatasetProperty(record.get(), link, property, longIntType, gUnknownUnits, &value);
  }

  /// An output whose counts are set; EndInit is the test's.
  Link announce(const std::string& name, const DatasetCounts& counts, int type = kAnySeismicType) const {
    Link link;
    SetNumberOfOutputs(record.get(), 1);
    EXPECT_EQ(NewOutputSeismicFile(&link, record.get(), folder.path(name).c_str(), 0, type, counts.recordsPerFile,
                                   counts.traces),
              kyrOk);
    EXPECT_EQ(set(link, dsRecords, counts.records), kyrOk);
    EXPECT_EQ(set(link, dsSamples, counts.samples), kyrOk);
    return link;
  }
  Link create(const std::string& name, const DatasetCounts& counts, int type = kAnySeismicType) const {
    const Link link = announce(name, counts, type);
    EXPECT_EQ(EndInit(record.get()), kyrOk);
    return link;
  }
  int put(Link link, int rec, int trace, int samples) const {
    const TestTrace wanted(rec, trace, samples);
    return TracePut(record.get(), link, rec, trace, wanted.samples.data(), &wanted.header);
  }
  void putAll(Link link, const DatasetCounts& counts) const {
    for (int rec = 1; rec <= counts.records; ++rec)
      for (int trace = 1; trace <= counts.traces; ++trace) EXPECT_EQ(put(link, rec, trace, counts.samples), kyrOk);
  }
  void make(const std::string& name, const DatasetCounts& counts, int type = kAnySeismicType) const {
    const Link link = create(name, counts, type);
    putAll(link, counts);
    EXPECT_EQ(CloseFile(record.get(), link), kyrOk);
  }

  /// What TraceGet answers, with the trace.
  struct Got {
    int result = 0;
    std::vector<float> samples{};
    TraceInfo header{};

    bool is(const TestTrace& wanted) const {
      return result == kyrOk && samples == wanted.samples && header.words == wanted.header.words;
    }
    /// Dead with this flag alone, all else zero.
    bool isDead(int flag) const {
      TraceInfo dead{};
      dead.words[trKillFlag] = static_cast<std::uint32_t>(flag);
      return header.words == dead.words && samples == std::vector<float>(samples.size());
    }
  };
  Got trace(Link link, int rec, int number, int samples) const {
    Got got;
    got.samples.assign(static_cast<std::size_t>(samples), -1.0F);
    got.result = TraceGet(record.get(), link, rec, number, got.samples.data(), &got.header);
    return got;
  }

  TestFolder folder;
  ProcessRecordPtr record{NewProcessRecord()};
};

inline void patchFile(const std::string& path, std::size_t place, const std::string& bytes) {
  std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
  file.seekp(static_cast<std::streamoff>(place));
  file << bytes;
}

/// The bytes of a file whose header was changed by `change` and is sound again.
template <typename Change>
std::string withHeader(const std::string& file, const Change& change) {
  DatasetHeaderBytes bytes{};
  std::copy_n(file.begin(), bytes.size(), bytes.begin());
  DatasetHeader header;
  EXPECT_EQ(decodeDatasetHeader(bytes, &header), kyrOk);
  change(header);
  bytes = encodeDatasetHeader(header);
  return std::string(bytes.begin(), bytes.end()) + file.substr(bytes.size());
}
