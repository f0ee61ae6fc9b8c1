#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <system_error>
#include <utility>

#include "archive/zip.hpp"
#include "archive/zip_utilities.hpp"
#include "archive/zip_writer.hpp"
#include "platform/foundation/temporary_file.hpp"

namespace vantorium {

namespace fs = std::filesystem;

namespace {

using Failure = std::optional<ZipError>;

Failure fail(std::string detail) { return ZipError(ZipError::zipFail, std::move(detail)); }

std::uint64_t sizeOf(const ProcessedFilePath& path) {
  std::error_code failure;
  const auto size = fs::file_size(path.filePath, failure);
  return failure ? 0 : size;
}

/// A step of minizip that did not work, with what the system says about it.
Failure fail(std::string_view what, int code) {
  if (code == 0) return fail(fmt::format("{}.", what));
  return fail(fmt::format("{}: {}.", what, writingFailure(code)));
}

Failure writeArchive(const fs::path& path, const std::vector<ProcessedFilePath>& files,
                     const std::optional<std::string>& password, ZipCompression compression,
                     const Zip::Progress& progress) {
  errno = 0;
  ZipWriter writer(path, password, compression);
  if (!writer.isOpen()) return fail("The archive could not be opened for writing", errno);
  std::uint64_t total = 0;
  for (const auto& file : files) total += sizeOf(file);
  std::uint64_t position = 0;
  for (const auto& file : files) {
    if (auto failure = writer.add(file)) return failure;
    position += sizeOf(file);
    if (progress && total > 0)
      progress(std::min(1.0, static_cast<double>(position) / static_cast<double>(total)));
  }
  errno = 0;
  if (!writer.close()) return fail("The archive could not be completed", errno);
  return std::nullopt;
}

Failure makeArchive(const std::vector<fs::path>& paths, const fs::path& zipFilePath,
                    const std::optional<std::string>& password, ZipCompression compression,
                    const Zip::Progress& progress) {
  auto files = ZipUtilities::processZipPaths(paths);
  // An archive of the folder that it stands in does not hold its own former self.
  std::erase_if(files, [&](const ProcessedFilePath& file) {
    std::error_code failure;
    return fs::equivalent(file.filePath, zipFilePath, failure);
  });
  if (files.empty()) return fail("There are no files to put into the archive.");
  std::optional<Error> error;
  auto temporary = TemporaryFile::createBeside(zipFilePath, error);
  if (!temporary) return fail(error->localizedDescription());
  if (auto failure = writeArchive(temporary->path(), files, password, compression, progress)) return failure;
  if ((error = temporary->moveTo(zipFilePath))) return fail(error->localizedDescription());
  if (progress) progress(1.0);
  return std::nullopt;
}

}  // namespace

std::optional<ZipError> Zip::zipFiles(const std::vector<fs::path>& paths, const fs::path& zipFilePath,
                                      const std::optional<std::string>& password, ZipCompression compression,
                                      const Progress& progress) {
  try {
    return makeArchive(paths, zipFilePath, password, compression, progress);
  } catch (...) {  // only a lack of memory gets here
    return memoryFailure(ZipError::zipFail);
  }
}

std::optional<fs::path> Zip::quickZipFiles(const std::vector<fs::path>& paths, const std::string& fileName,
                                           const Progress& progress, std::optional<ZipError>& error) {
  try {
    const fs::path folder = paths.empty() ? fs::path() : paths.front().parent_path();
    fs::path archive = folder / (fileName + ".zip");
    error = zipFiles(paths, archive, std::nullopt, ZipCompression::defaultCompression, progress);
    if (!error) return archive;
  } catch (...) {  // only a lack of memory gets here
    error = memoryFailure(ZipError::zipFail);
  }
  return std::nullopt;
}

}  // namespace vantorium
