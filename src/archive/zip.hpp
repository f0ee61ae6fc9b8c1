#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "archive/zip_error.hpp"
#include "archive/zip_limits.hpp"

namespace vantorium {

/// How hard zlib tries, by its own level numbers.
enum class ZipCompression : int {
  noCompression = 0,
  bestSpeed = 1,
  defaultCompression = -1,
  bestCompression = 9,
};

/// Unpacks and makes zip archives. Every function works on the calling thread, which may be any, until it is
/// done, and calls its callbacks there; several may run at the same time. Workers that are free help to
/// unpack; nothing waits for one that is not. Nothing is thrown: whatever is short, memory included, is an
/// error.
class Zip {
 public:
  /// Is given the part that is done, from 0.0 to 1.0, after each entry and, as 1.0, at the end. Entries are
  /// told of in the order of the archive, each some time after it was done.
  using Progress = std::function<void(double)>;
  /// Is given the path of each entry that was dealt with: a file, a folder, or a file that was kept. In the
  /// same order.
  using FileOutputHandler = std::function<void(const std::filesystem::path&)>;

  /// Asked now and then; true ends the work.
  using IsCancelled = std::function<bool()>;

  /// Unpacks the archive into the folder `destination`, which is made if it is not there.
  ///
  /// Nothing outside the folder is touched, whatever the archive says: an entry whose name leads out or is no
  /// UTF-8 text ends the work before anything of it is written, and no symbolic link below `destination` is
  /// followed. None is made either: links, pipes and devices become files that hold what is stored for them.
  /// Folders are made as they are needed; files get the permissions that the archive has for them, if it lets
  /// their owner read.
  ///
  /// With `overwrite` a file takes the place of the one (or the link) that stands there, once it is complete;
  /// without, what stands there is kept. The archive itself is never replaced. An entry that cannot be
  /// written is an error; an empty one is not, if something of another kind stands in its place. Of entries
  /// of one name the last one stays, or without `overwrite` the first. `password` is for encrypted entries
  /// (the format's traditional cipher) and must be ASCII.
  ///
  /// Returns the failure, that of the first entry in the archive that fails, with its name and the reason.
  /// The files of the entries before it stay, and its own is removed; some of those after it may be there,
  /// complete.
  static std::optional<ZipError> unzipFile(const std::filesystem::path& archive,
                                           const std::filesystem::path& destination, bool overwrite,
                                           const std::optional<std::string>& password = std::nullopt,
                                           const Progress& progress = {},
                                           const FileOutputHandler& fileOutputHandler = {},
                                           const ZipLimits& limits = {}, const IsCancelled& isCancelled = {});

  /// Unpacks the archive, replacing files, into the folder beside it that has its name without the extension.
  /// Returns that folder, or none with `error` set.
  static std::optional<std::filesystem::path> quickUnzipFile(const std::filesystem::path& archive,
                                                             const Progress& progress,
                                                             std::optional<ZipError>& error);

  /// Makes an archive of the files, and of all files in the folders, of `paths`; see `ZipUtilities` for their
  /// names in it. It takes the place of a file at `zipFilePath` once it is complete. Symbolic links inside
  /// the folders are left out. Returns the failure, always `ZipError::zipFail`; nothing is left behind then.
  static std::optional<ZipError> zipFiles(const std::vector<std::filesystem::path>& paths,
                                          const std::filesystem::path& zipFilePath,
                                          const std::optional<std::string>& password,
                                          ZipCompression compression = ZipCompression::defaultCompression,
                                          const Progress& progress = {});

  /// Makes the archive `fileName` + ".zip" beside the first of `paths`, with the default compression and no
  /// password. Returns its path, or none with `error` set.
  static std::optional<std::filesystem::path> quickZipFiles(const std::vector<std::filesystem::path>& paths,
                                                            const std::string& fileName,
                                                            const Progress& progress,
                                                            std::optional<ZipError>& error);

  /// Whether a file with this extension (without the dot, case counts) is taken for an archive: "zip", "cbz"
  /// and what was added.
  static bool isValidFileExtension(const std::string& fileExtension);
  /// The extensions that were added, for the whole process. Any thread.
  static std::set<std::string> customFileExtensions();
  static void addCustomFileExtension(const std::string& fileExtension);
  static void removeCustomFileExtension(const std::string& fileExtension);
};

}  // namespace vantorium
