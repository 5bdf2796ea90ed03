/// EBCDIC and ASCII, by tables that the caller keeps.
///
/// Code page 037 for the 7-bit characters, with the habits of the recording instruments laid over it: "#", "[", "]",
/// "^", "{", "|", "}" and "~" have other EBCDIC codes, and 0x60, the code of "-", reads back as "~". EBCDIC codes
/// without a 7-bit character read as blanks.
#pragma once

/// Entries of the two tables.
constexpr int kA2eTableSize = 128;
constexpr int kE2aTableSize = 256;

/// Builds both tables.
void initascebc(int* a2eTable, int* e2aTable);

// Its four steps. The tables are first filled from the code page, then given the exceptions.
void initAtable(int* a2eTable);  ///< ASCII to EBCDIC, the code page
void initBtable(int* a2eTable);  ///< ASCII to EBCDIC, the exceptions
void initEtable(int* e2aTable);  ///< EBCDIC to ASCII, the code page; codes without a 7-bit character are not touched
void initFtable(int* e2aTable);  ///< EBCDIC to ASCII, the exceptions

/// Translates `numbytes` bytes and writes a zero byte behind them: `stringEbc` holds `numbytes` + 1. Bytes above 127
/// become the EBCDIC substitute 0x3F. The strings may be one and the same.
void asc2ebc(const char* stringAsc, char* stringEbc, int numbytes, const int* a2eTable);
/// The way back; `stringAsc` holds `numbytes` + 1 bytes.
void ebc2asc(const char* stringEbc, char* stringAsc, int numbytes, const int* e2aTable);
