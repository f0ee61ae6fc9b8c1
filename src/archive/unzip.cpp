#include <fmt/format.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "archive/archive_source.hpp"
#include "archive/entry_extractor.hpp"
#include "archive/entry_queue.hpp"
#include "archive/helpers.hpp"
#include "archive/zip.hpp"

namespace vantorium {

namespace fs = std::filesystem;

namespace {

using Failure = std::optional<ZipError>;

/// As many as the process has workers at most, and no more than can run at a time.
unsigned usefulThreads() { return std::clamp(std::thread::hardware_concurrency(), 1U, 4U); }

/// What the caller of `Zip::unzipFile` is told and asked, on its own thread.
struct Callbacks {
  const Zip::Progress& progress;
  const Zip::FileOutputHandler& fileOutputHandler;
  const Zip::IsCancelled& isCancelled;
};

/// One run of `Zip::unzipFile`. Its thread unpacks entry after entry and tells the caller what is done; so do
/// helpers, as far as there are any, but for the telling.
class Unzipping {
 public:
  Unzipping(const ArchiveSource& source, const fs::path& destination, bool overwrite,
            const std::optional<std::string>& password, const ZipLimits& limits, const Callbacks& callbacks)
      : source_(source),
        destination_(destination),
        existing_(overwrite ? ConfinedFile::Existing::replace : ConfinedFile::Existing::keep),
        password_(password),
        callbacks_(callbacks),
        queue_(source, destination, limits) {}

  Failure run();

 private:
  void work(EntryExtractor& extractor, Helpers& helpers);
  void help();
  void tell();
  bool isGivenUp();
  std::unique_ptr<EntryExtractor> makeExtractor() const {
    return std::make_unique<EntryExtractor>(source_, existing_, password_);  // large for a stack
  }

  const ArchiveSource& source_;
  const fs::path& destination_;
  const ConfinedFile::Existing existing_;
  const std::optional<std::string>& password_;
  const Callbacks& callbacks_;
  EntryQueue queue_;
  std::uint64_t toldBytes_ = 0;
  bool isGivenUp_ = false;
};

Failure Unzipping::run() {
  const auto extractor = makeExtractor();
  {
    Helpers helpers(usefulThreads() - 1, [this] { help(); });
    try {
      work(*extractor, helpers);
    } catch (...) {
      queue_.fail(0, memoryFailure(ZipError::unzipFail));  // so that the helpers leave
      throw;
    }
  }
  if (auto failure = queue_.failure()) return failure;
  if (callbacks_.progress) callbacks_.progress(1.0);
  return std::nullopt;
}

void Unzipping::work(EntryExtractor& extractor, Helpers& helpers) {
  const auto isStopped = [this](std::uint64_t number) { return isGivenUp() || queue_.isAbandoned(number); };
  std::vector<EntryJob> jobs;
  auto step = EntryQueue::Step::work;
  while (step != EntryQueue::Step::end) {
    const std::uint64_t seen = queue_.changes();
    if (!isGivenUp()) tell();
    step = queue_.take(jobs);
    if (step == EntryQueue::Step::wait) queue_.waitForChange(seen);
    if (step == EntryQueue::Step::work && queue_.hasMore()) helpers.invite();
    for (const EntryJob& job : jobs) {
      queue_.finish(job, extractor.extract(job, isStopped));
      if (!isGivenUp_) tell();
    }
  }
  if (!isGivenUp_) tell();
}

/// On a worker, until there is nothing to take.
void Unzipping::help() {
  try {
    const auto extractor = makeExtractor();
    const auto isStopped = [this](std::uint64_t number) { return queue_.isAbandoned(number); };
    std::vector<EntryJob> jobs;
    while (queue_.take(jobs) == EntryQueue::Step::work) {
      for (const EntryJob& job : jobs) queue_.finish(job, extractor->extract(job, isStopped));
    }
  } catch (const std::exception&) {  // no memory for one more: the others go on
  }
}

void Unzipping::tell() {
  while (const auto finished = queue_.nextFinished()) {
    // Claims that are too large stop at the end.
    toldBytes_ += std::min(finished->compressedBytes, source_.size() - toldBytes_);
    if (callbacks_.progress)
      callbacks_.progress(static_cast<double>(toldBytes_) / static_cast<double>(source_.size()));
    if (callbacks_.fileOutputHandler) callbacks_.fileOutputHandler(destination_ / finished->path);
  }
}

bool Unzipping::isGivenUp() {
  if (!isGivenUp_ && callbacks_.isCancelled && callbacks_.isCancelled()) {
    isGivenUp_ = true;
    queue_.fail(0, givenUp());
  }
  return isGivenUp_;
}

bool isASCII(const std::string& text) {
  return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 128; });
}

Failure notFound(const fs::path& archive) {
  const std::string dotted = archive.extension().string();
  const std::string extension = dotted.empty() ? "" : dotted.substr(1);
  std::error_code failure;
  if (!fs::exists(archive, failure))
    return ZipError(ZipError::fileNotFound, fmt::format("There is none at {}.", archive.string()));
  if (Zip::isValidFileExtension(extension)) return std::nullopt;
  return ZipError(ZipError::fileNotFound, fmt::format("The extension \"{}\" of {} is none of an archive.",
                                                      extension, archive.filename().string()));
}

/// The detail of what is wrong is one sentence.
Failure unzip(const fs::path& archive, const fs::path& destination, bool overwrite,
              const std::optional<std::string>& password, const ZipLimits& limits,
              const Callbacks& callbacks) {
  if (password && !isASCII(*password)) return ZipError(ZipError::unzipFail, "The password must be ASCII.");
  const ArchiveSource source(archive);
  if (!source.isOpen())
    return ZipError(ZipError::unzipFail,
                    fmt::format("It cannot be opened: {}.", std::generic_category().message(source.error())));
  return Unzipping(source, destination, overwrite, password, limits, callbacks).run();
}

}  // namespace

std::optional<ZipError> Zip::unzipFile(const fs::path& archive, const fs::path& destination, bool overwrite,
                                       const std::optional<std::string>& password, const Progress& progress,
                                       const FileOutputHandler& fileOutputHandler, const ZipLimits& limits,
                                       const IsCancelled& isCancelled) {
  try {
    if (auto failure = notFound(archive)) return failure;
    const Callbacks callbacks{progress, fileOutputHandler, isCancelled};
    const auto failure = unzip(archive, destination, overwrite, password, limits, callbacks);
    if (!failure) return std::nullopt;
    return ZipError(ZipError::unzipFail,
                    fmt::format("{}: {}", archive.filename().string(), failure->detail()),
                    failure->systemCode());
  } catch (...) {  // only a lack of memory gets here
    return memoryFailure(ZipError::unzipFail);
  }
}

}  // namespace vantorium
