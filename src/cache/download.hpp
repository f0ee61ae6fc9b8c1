#pragma once

#include <string>
#include <vector>

#include "platform/foundation/result.hpp"

namespace vantorium {

/// One file that is to be fetched, and where it goes; both have been checked.
struct Download {
  std::string sourcePath;       ///< the address as the record has it
  std::string url;              ///< what is asked for
  std::string destinationPath;  ///< absolute; inside the folder that it was planned for
  bool mayBeEmpty = true;       ///< whether an answer without a byte is of use
};

/// Plans the download of `sourcePath` into the folder `basePath`. The address is percent-encoded. The file
/// goes where the address's path leads below the folder, without the first occurrence of `pathToRemove`.
/// Fails when the text is no address, its path names no file or leads out of the folder; the error names the
/// record's `field`, for it is the record that must be mended.
Result<Download> planDownload(const std::string& field, const std::string& sourcePath,
                              const std::string& basePath, const std::string& pathToRemove = {});

/// An address, and the field of the record that it stands in.
struct Wanted {
  std::string field;
  std::string sourcePath;
};
/// Plans several downloads into one folder, one result for each. A file whose address has the same path as
/// another's (on two hosts, or with two queries), or a path that leads through another's, goes into a folder
/// of its own.
std::vector<Result<Download>> planDistinctDownloads(const std::vector<Wanted>& wanted,
                                                    const std::string& basePath);

/// Plans a download to `destinationPath`, a file of the folder `basePath`. The address is taken as it stands,
/// and an answer without a byte is of no use.
Result<Download> planFileDownload(const std::string& field, const std::string& sourcePath,
                                  const std::string& destinationPath, const std::string& basePath);

}  // namespace vantorium
