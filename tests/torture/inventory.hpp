#pragma once

#include <filesystem>
#include <map>
#include <set>
#include <string>

namespace vantorium::torture {

/// Files as lines of text that are the same in every run in which the same files are there: "label path =
/// content". Parts of a path that are made anew each time are a "*", and a content that the service has goes
/// by its name there.
using Inventory = std::set<std::string>;

/// Tells files apart by what the service has.
class Catalogue {
 public:
  /// Reads all files of the folder that the service serves, those included that its archives are packed of.
  Catalogue(const std::filesystem::path& folder, std::string service);

  /// A line for a file.
  std::string describe(const std::string& label, const std::filesystem::path& file,
                       const std::filesystem::path& home) const;
  /// A line for each file of a folder and of those in it.
  Inventory describeAll(const std::string& label, const std::filesystem::path& folder,
                        const std::filesystem::path& home) const;

 private:
  std::string contentName(const std::filesystem::path& file, const std::filesystem::path& home) const;

  std::string service_;                       ///< its address, which stands in its texts
  std::map<std::string, std::string> names_;  ///< by content
};

}  // namespace vantorium::torture
