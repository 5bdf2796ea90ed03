/// A disk file of any size, its positions kept as doubles. Failures are results plus a saved system error number;
/// nothing is thrown and nothing is posted.
#pragma once

#include <cstdio>
#include <memory>
#include <string>

class LargeFile {
 public:
  LargeFile(const char* name, const char* mode);
  ~LargeFile();
  LargeFile(const LargeFile&) = delete;
  LargeFile& operator=(const LargeFile&) = delete;

  /// Opens the stream (modes as of fopen), closing one that is open. Answers IsValid().
  bool Open(const char* name, const char* mode);
  /// False when the stream reports an error; it is closed all the same in the system's eyes, and IsValid() stays true
  /// as the sign that this object has failed: every later call on it fails.
  bool Close();
  bool IsValid() const { return TheFile != nullptr; }
  /// A read met the end of the file; cleared by Close only.
  bool Eof() const { return EndOfFile; }
  /// System error number of the last failed call, 0 after a successful one.
  int Error() const { return Errno; }
  /// @return bytes read, 0 to `bytes`, or -1
  int Read(char* buffer, int bytes);
  /// @return bytes written, or -1
  int Write(const char* buffer, int bytes);
  /// @param offset bytes, cut to a whole number
  /// @param whence SEEK_SET, SEEK_CUR or SEEK_END
  bool Seek(double offset, int whence);
  /// Size in bytes of the file of this name as the file system has it (unflushed writes not counted), 0 on failure.
  double GetSize();
  double GetPos() const { return FilePosition; }
  /// Hands what was written to the system.
  bool Flush();

 private:
  bool fail(int error);
  bool usable();

  std::FILE* TheFile = nullptr;
  std::string Name;
  double FileSize = 0;
  double FilePosition = 0;
  bool EndOfFile = false;
  int Errno = 0;
  bool dead_ = false;  ///< the stream is gone after a failed close
  std::unique_ptr<char[]> streamBuffer_;
};
