/// The output parameter blocks of the program's own format modules. Whatever module reads an input gets one of them,
/// for it is the input's module that writes the output; a module of one's own can read and fill them too. This header
/// is C and C++.
#pragma once

/// Identifiers by which the program itself knows modules: SEG Y, datasets, SEG D.
enum { KYR_ID_SEGY = 0, KYR_ID_DATASET = 1, KYR_ID_SEGD = 10 };

/// In place of an output format's identifier: the input is only checked. The modules KYR_ID_SEGY and KYR_ID_SEGD are
/// asked for that.
enum { KYR_CHECK_RUN = 999999 };

enum { KYR_BLOCK_VERSION = 1, KYR_BLOCK_PATH = 1024 };

/// What such a block begins with. It tells who asks whether the bytes behind it are what he takes them for.
struct KyrBlockHead {
  char signature[8];  ///< the kind of block, zero-filled
  int size;           ///< bytes of the whole block
  int version;        ///< KYR_BLOCK_VERSION of who filled it
};

#define KYR_SEGY_INPUT "SEGYin"
#define KYR_SEGY_OUTPUT "SEGYout"
#define KYR_DATASET_OUTPUT "KYRout"
#define KYR_DATASET_INPUT "KYRin"

/// Values of KyrSegyOutput::byteOrder.
enum { KYR_ORDER_DESCRIBED = 0, KYR_ORDER_BIG = 1, KYR_ORDER_LITTLE = 2 };

enum { KYR_FIELD_FILES = 16 };

/// Which field files are read. Zeros mean all of them.
struct KyrFieldFiles {
  int hasLimits;  ///< 1: only those between the two, which are themselves excluded
  int above;
  int below;
  int leftOutCount;  ///< entries of leftOut
  int leftOut[KYR_FIELD_FILES];
};

enum { KYR_MOST_RECORDS = 10000 };

/// What a tape does not tell before its end. More than is announced ends a run.
struct KyrTapeCounts {
  int records;  ///< at most so many; 0: KYR_MOST_RECORDS
  int traces;   ///< of a record, at most; 0: as the headers say
  int oneFile;  ///< 1: a single tape file, with what continues it on further tapes; 0: all files of the tapes
};

/// Values of KyrSegyInput::text.
enum { KYR_TEXT_TOLD_APART = 0, KYR_TEXT_EBCDIC = 1, KYR_TEXT_ASCII = 2 };

/// How SEG Y is read.
struct KyrSegyInput {
  struct KyrBlockHead head;
  char description[KYR_BLOCK_PATH];  ///< the format description's path; empty for the program's, which reads all
                                     ///< revisions
  char recordField[64];              ///< a new record begins where this field of the trace header changes; or empty
  int tracesPerRecord;               ///< without such a field: every so many traces; 0: all are one record
  int gridLines;                     ///< 1: CMP line and location from the inline and crossline numbers
  int text;                          ///< one of the three above
  int byteOrder;                     ///< KYR_ORDER_DESCRIBED: as the file says
  int sampleFormat;                  ///< code of the sample format; 0: as the file says
  struct KyrFieldFiles fieldFiles;
  struct KyrTapeCounts tape;
};

/// How SEG Y is written.
struct KyrSegyOutput {
  struct KyrBlockHead head;
  char description[KYR_BLOCK_PATH];  ///< the format description's path; empty for the program's revision 1
  char textFile[KYR_BLOCK_PATH];     ///< what the text header is taken from; empty for one that tells what was done
  int sampleFormat;                  ///< 1 IBM floats, 2 and 3 integers of 4 and 2 bytes, 5 IEEE floats
  int deadTraces;                    ///< 1: dead traces are written, 0: they are left out
  int stripAuxiliary;                ///< 1: auxiliary traces are left out
  int byteOrder;                     ///< one of the three above
};

/// How a dataset is written: there is nothing to choose.
struct KyrDatasetOutput {
  struct KyrBlockHead head;
};

/// What is read of a dataset.
struct KyrDatasetInput {
  struct KyrBlockHead head;
  int firstRecord;  ///< from 1
  int lastRecord;   ///< 0: the last
};

#define KYR_SEGD_INPUT "SEGDin"

enum { KYR_SEGD_SETS = 16 };

/// How SEG D is read. Zeros are the defaults.
struct KyrSegdInput {
  struct KyrBlockHead head;
  int wholeFolder;  ///< 1: all SEG D files of the folder that the chosen one stands in, by their names
  int raw;          ///< 1: numbers as they were recorded; 0: volts
  int auxiliary;    ///< 1: auxiliary channel sets as well
  int pad;          ///< 1: shorter traces are filled with zeros; 0: traces of another length are left out
  int sets;         ///< entries of setList; 0: all channel sets
  int setList[KYR_SEGD_SETS];
  struct KyrFieldFiles fieldFiles;
  struct KyrTapeCounts tape;
};
