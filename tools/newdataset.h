/// A dataset that a command makes: it is gone again unless it was kept.
#pragma once

#include <string>

#include "libkyr/datasetfile.h"

class NewDataset {
 public:
  NewDataset(const std::string& path, const DatasetFile::Say& say) : file(path, say) {}
  ~NewDataset() {
    if (!kept_) file.discard();
  }
  NewDataset(const NewDataset&) = delete;
  NewDataset& operator=(const NewDataset&) = delete;

  /// Closes what has been written. @return whether all of it is on the disk; only then it stays
  bool keep() { return kept_ = file.close() == kyrOk; }

  DatasetFile file;

 private:
  bool kept_ = false;
};
