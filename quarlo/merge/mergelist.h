/// What a merge is told: the datasets to join, where they go, and as what. The dialog edits it, the job reads it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "libkyr/datasets.h"
#include "xvt/xvt.h"

/// One input.
struct KyrFile {
  FILE_SPEC fs{};
  std::string fullFileName{};  ///< the path that `fs` makes
  int seismicFileType = 0;     ///< its SeisType; 0 for a file that could not be opened
  int numberOfRecords = 0;     ///< of those with a live trace, once a merge has looked at them
  int tracesPerRecord = 0;
  int numberOfSamples = 0;
  float sampleInterval = 0;                    ///< seconds
  std::unique_ptr<int[]> liveRecordList = {};  ///< numbers of the records with a live trace, while a merge runs
};

using wxFileArray = std::vector<std::unique_ptr<KyrFile>>;

extern wxFileArray InputList;
extern FILE_SPEC outFile;        ///< its name is empty while there is none
extern bool overrideOutputType;  ///< the output is of the type of row `typeIndex`, whatever the inputs are
extern int typeIndex;

/// An output type that can be forced.
struct MergeType {
  const char* name;
  SeisType type;
};
extern const MergeType theTypes[3];

/// Whether a file is in the list already or is the output, by whatever path. Null asks whether the output is an input.
bool isDuplicate(const KyrFile* inputFile);

/// A file for the list, with what the list shows of it.
std::unique_ptr<KyrFile> newKyrFile(const FILE_SPEC& file);

/// Reads type, counts and interval of an open dataset.
void readFacts(const ProcessRecord* record, Link link, KyrFile* file);

/// Fills the list box of the inputs anew.
void updateList(WINDOW theList);
