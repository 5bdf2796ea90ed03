/// The links of a process record: which sources and outputs stand behind them. The library's own.
#pragma once

#include <map>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "libkyr/datasetfile.h"

/// A source, and what its code lives in, which is given back after it.
struct OwnedSource {
  std::shared_ptr<void> owner{};
  std::unique_ptr<TraceSource> source{};
  bool wantsOwner = false;  ///< given to the record, and not held yet

  OwnedSource() = default;
  OwnedSource(OwnedSource&&) = default;
  OwnedSource& operator=(OwnedSource&& other) noexcept {
    source = std::move(other.source);
    owner = std::move(other.owner);
    wantsOwner = other.wantsOwner;
    return *this;
  }
  OwnedSource(const OwnedSource&) = delete;
  OwnedSource& operator=(const OwnedSource&) = delete;
  ~OwnedSource() = default;
};

/// One input or output.
struct OpenLink {
  Link link{};
  OwnedSource owned{};
  DatasetFile* output = nullptr;  ///< the source of an output; null of an input

  TraceSource* source() const { return owned.source.get(); }
  /// Gives a new source a new link.
  Link open(OwnedSource opened);
  /// @return as CloseFile
  int close();
};

/// One side of a record: its links by number.
struct LinkSide {
  std::vector<OpenLink> links{};
  int announced = 0;

  /// The place for a number, closed and free; null for a number that was not announced.
  OpenLink* freePlace(int number);
  bool uses(const char* path) const;
};

struct KyrDatasets {
  LinkSide inputs{};
  LinkSide outputs{};
  std::map<int, OwnedSource> waiting{};  ///< by input number: sources that a NewInputFile takes
  std::vector<std::string> warned{};     ///< datasets whose opening warned already
};

/// The links of a record, made when there are none yet.
KyrDatasets* datasetsOf(ProcessRecord* procRecord);

/// What stands behind a link; null for one that is not valid.
OpenLink* findLink(const ProcessRecord* procRecord, Link link);
TraceSource* sourceOf(const ProcessRecord* procRecord, Link link);

/// Nothing is thrown through the library's calls. @return what `work` answers, or the code of what it threw
template <typename Work>
int guarded(const Work& work) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    return kyrNoMemory;
  } catch (...) {
    return kyrBadCall;
  }
}
