#pragma once

#include <string>

#include <vantorium/error.hpp>

namespace vantorium {

/// Why an archive could not be unpacked or made. A value: copies are independent, reading one is safe on any
/// thread.
class ZipError {
 public:
  static constexpr const char* errorDomain = "com.vantorium.zip";
  enum Code : int {
    fileNotFound = 1,  ///< there is no file at the archive's path, or its extension is none of an archive
    unzipFail = 2,     ///< the archive is damaged, refused or cannot be written out
    zipFail = 3,       ///< the archive could not be made
  };

  /// `detail` is one line: what exactly was wrong, with which entry, and what to do where that helps.
  /// `systemCode` is the `errno` value of a file that could not be written, else 0.
  explicit ZipError(Code code, std::string detail = {}, int systemCode = 0);

  Code code() const { return code_; }
  const std::string& detail() const { return detail_; }
  int systemCode() const { return systemCode_; }
  /// One line for people, the same for all errors of a code.
  const char* description() const;

  /// Of domain "com.vantorium.zip" with the same code. Its texts are the description followed by the detail.
  operator Error() const;

 private:
  Code code_;
  std::string detail_;
  int systemCode_;
};

/// In place of an exception, which does not reach the caller.
ZipError memoryFailure(ZipError::Code code);

/// Why something could not be written, and what to do where that helps, by its `errno` value.
std::string writingFailure(int code);

}  // namespace vantorium
