/// The files of a dataset as a store of slots: slots in a row are read and written in large pieces.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "libkyr/partfile.h"

class SlotStore {
 public:
  /// Where a slot stands.
  struct Place {
    int part = 0;
    std::uint64_t offset = 0;
    std::size_t size = 0;
  };

  std::vector<PartFile>& parts() { return parts_; }
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

  std::vector<PartFile> parts_;
  Stretch window_;               ///< what was read last
  Stretch pending_;              ///< what is to be written
  std::size_t pendingSlot_ = 0;  ///< bytes of a slot in it
  std::uint64_t lost_ = 0;
};
