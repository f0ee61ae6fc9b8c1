#include "archive/zip_error.hpp"

#include <fmt/format.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace vantorium {

ZipError::ZipError(Code code, std::string detail, int systemCode)
    : code_(code), detail_(std::move(detail)), systemCode_(systemCode) {}

const char* ZipError::description() const {
  switch (code_) {
    case fileNotFound:
      return "File not found.";
    case unzipFail:
      return "Failed to unzip file.";
    case zipFail:
      break;
  }
  return "Failed to zip file.";
}

ZipError::operator Error() const {
  return Error::platform(errorDomain, code_,
                         detail_.empty() ? description() : fmt::format("{} {}", description(), detail_));
}

// The text is short enough to need no memory itself.
ZipError memoryFailure(ZipError::Code code) { return ZipError(code, "Out of memory."); }

std::string writingFailure(int code) {
  if (code == ETXTBSY) return "it would replace the archive itself";
  if (code == ENOTDIR || code == ELOOP) return "a file or a symbolic link stands where a folder is needed";
  if (code == ENOSPC || code == EDQUOT || code == EFBIG)
    return std::generic_category().message(code) + "; free some space and try again";
  return std::generic_category().message(code);
}

}  // namespace vantorium
