#include "archive/zip_error.hpp"

#include <fmt/format.h>

#include <utility>

namespace vantorium {

ZipError::ZipError(Code code, std::string detail) : code_(code), detail_(std::move(detail)) {}

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
  return Error::platform(errorDomain, code_, description(),
                         detail_.empty() ? "" : fmt::format("{} {}", description(), detail_));
}

}  // namespace vantorium
