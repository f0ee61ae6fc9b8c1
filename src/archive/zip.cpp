#include "archive/zip.hpp"

#include "platform/foundation/thread_annotations.hpp"

namespace vantorium {

namespace {

struct CustomExtensions {
  Mutex mutex;
  std::set<std::string> set GUARDED_BY(mutex);
};

CustomExtensions& customExtensions() {
  static CustomExtensions extensions;
  return extensions;
}

}  // namespace

std::optional<std::filesystem::path> Zip::quickUnzipFile(const std::filesystem::path& archive,
                                                         const Progress& progress,
                                                         std::optional<ZipError>& error) {
  try {
    std::filesystem::path folder = archive.parent_path() / archive.stem();
    error = unzipFile(archive, folder, true, std::nullopt, progress);
    if (!error) return folder;
  } catch (...) {  // only a lack of memory gets here
    error = memoryFailure(ZipError::unzipFail);
  }
  return std::nullopt;
}

bool Zip::isValidFileExtension(const std::string& fileExtension) {
  if (fileExtension == "zip" || fileExtension == "cbz") return true;
  const MutexLock lock(customExtensions().mutex);
  return customExtensions().set.contains(fileExtension);
}

std::set<std::string> Zip::customFileExtensions() {
  const MutexLock lock(customExtensions().mutex);
  return customExtensions().set;
}

void Zip::addCustomFileExtension(const std::string& fileExtension) {
  const MutexLock lock(customExtensions().mutex);
  customExtensions().set.insert(fileExtension);
}

void Zip::removeCustomFileExtension(const std::string& fileExtension) {
  const MutexLock lock(customExtensions().mutex);
  customExtensions().set.erase(fileExtension);
}

}  // namespace vantorium
