/// The files of a dataset as a store of slots: slots in a row are read and written in large pieces, beside the work of
/// who asks for them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "libkyr/partfile.h"
#include "libkyr/sidework.h"

class SlotStore {
 public:
  /// Where a slot stands.
  struct Place {
    int part = 0;
    std::uint64_t offset = 0;
    std::size_t size = 0;
  };

  /// To change them: nothing is under way in them then.
  std::vector<PartFile>& parts() {
    writing_.wait();
    return parts_;
  }
  const std::vector<PartFile>& parts() const { return parts_; }

  // Who reads flushes first: a failure to write is another answer than a failure to read.

  /// The bytes of a slot, good until the next call. @param got how many of them there are: less than the slot's size
  /// where the file ends. @return null with errno on a failure
  const unsigned char* read(const Place& place, std::size_t* got);
  /// The first bytes of a slot, into the caller's memory. @return false with errno on a failure
  bool readHead(const Place& place, unsigned char* bytes, std::size_t count, std::size_t* got);

  /// Memory to make a slot in; it reaches its file with the next flush at the latest. @return null with errno when what
  /// was made before could not be written
  unsigned char* write(const Place& place);
  /// @return false with errno when slots made before could not be written; they are given up
  bool flush();
  /// Slots that were made and given up so.
  std::uint64_t lost() const { return lost_; }

 private:
  /// Memory over a stretch of one file.
  struct Stretch {
    std::unique_ptr<unsigned char[]> bytes{};
    std::size_t capacity = 0;
    Place place{};  ///< its size counts the bytes in use

    unsigned char* make(std::size_t size);  ///< @return null with errno when there is no memory
    bool covers(const Place& other) const;
    bool endsAt(const Place& other) const;
  };
  /// A stretch of slots on its way to a file.
  struct Load : Stretch {
    std::size_t slotSize = 0;
    std::size_t taken = 0;  ///< bytes that the file took
    int error = 0;          ///< errno where it did not take them all
  };

  bool readInto(Stretch* stretch, const Place& place, std::size_t size);
  bool wasReadAhead(const Place& place);
  void readAhead(std::size_t size);
  void store(Load* load) const;
  bool account(Load* load);
  bool handOver();

  std::vector<PartFile> parts_;
  Stretch window_;  ///< what was read last
  Stretch next_;    ///< what is read ahead
  Load pending_;    ///< what is made
  Load leaving_;    ///< what is written beside
  std::uint64_t lost_ = 0;
  ReadAhead ahead_;  // these two last: they use the others
  SideWork writing_;
};
