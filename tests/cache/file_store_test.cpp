#include "cache/file_store.hpp"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>
#include <thread>

#include "platform/foundation/files.hpp"
#include "support/temporary_directory.hpp"

namespace vantorium {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

class FileStoreTest : public ::testing::Test {
 protected:
  fs::path caches() const { return home_.path() / "caches"; }
  FileStore store(std::uint64_t budget = 0) { return FileStore({caches(), {}}, budget); }
  static void write(const fs::path& path, std::size_t bytes = 1) {
    fs::create_directories(path.parent_path());
    std::ofstream(path) << std::string(bytes, 'x');
  }
  /// Waits for the workers.
  static bool await(const std::function<bool()>& done) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!done() && std::chrono::steady_clock::now() < deadline) std::this_thread::yield();
    return done();
  }
  /// A creative with a film of that size.
  static std::shared_ptr<const Creative> creative(const FileStore& store, const std::string& hash,
                                                  std::uint64_t bytes = 10, json fields = json::object()) {
    fields["hash"] = hash;
    auto made = std::make_shared<Creative>();
    made->record = std::make_shared<Campaign>(fields);
    made->film = store.claim(made->record->identifier + ".mp4");
    made->filmBytes = bytes;
    write(made->film->path(), bytes);
    return made;
  }

  testing::TemporaryDirectory home_;
};

TEST_F(FileStoreTest, StartsEmptyAndRemovesWhatDeadProcessesLeft) {
  write(caches() / "com.vantorium/old/page.html");
  write(caches() / "com.vantorium.old-OF-A-KILLED-PROCESS/film.mp4");
  write(caches() / "com.vantorium.DEAD/film.mp4");
  write(caches() / "com.vantorium.DEAD.lock", 0);
  write(caches() / "com.vantorium-else/theirs");
  const FileStore mine = store();
  EXPECT_EQ(mine.root(), caches() / "com.vantorium");
  EXPECT_FALSE(fs::exists(mine.root()));
  EXPECT_TRUE(await([&] {
    // The lock of this one, and what is somebody else's.
    return std::distance(fs::directory_iterator(caches()), fs::directory_iterator()) == 2;
  }));
  EXPECT_TRUE(fs::exists(caches() / "com.vantorium-else/theirs"));
}

TEST_F(FileStoreTest, EachProcessOwnsAFolderOfItsOwn) {
  auto first = std::make_unique<FileStore>(Directories{caches(), {}}, 0);
  const auto film = first->claim("film.mp4");
  write(film->path());
  auto second = std::make_unique<FileStore>(Directories{caches(), {}}, 0);
  EXPECT_NE(second->root(), first->root());
  write(second->root() / "theirs");
  const fs::path left = second->root();
  second->clear();
  EXPECT_TRUE(fs::exists(film->path())) << "another process empties its own folder alone";
  write(left / "left behind");
  second.reset();
  EXPECT_TRUE(await([&] { return !fs::exists(left.string() + ".lock"); })) << "goes with its owner";
  EXPECT_FALSE(fs::exists(left));
  EXPECT_TRUE(fs::exists(film->path()));
  first.reset();
  EXPECT_EQ(store().root(), caches() / "com.vantorium") << "free again";
}

/// What `flock` does on a file system without locks.
int noLocks(int, int) {
  errno = ENOLCK;
  return -1;
}

TEST_F(FileStoreTest, OwnersAreToldApartWithoutLocksToo) {
  fs::create_directories(caches());
  const fs::path file = caches() / "mark";
  std::optional<FolderLock> first = FolderLock::take(file, &noLocks);
  ASSERT_TRUE(first);
  EXPECT_FALSE(FolderLock::take(file, &noLocks)) << "its owner lives";
  std::optional<Error> error;
  const std::string mark = readFile(file, error).value_or("");
  first.reset();
  EXPECT_FALSE(fs::exists(file));

  const auto lastWord = mark.rfind(' ');
  std::ofstream(file) << mark.substr(0, lastWord) << " 1";
  EXPECT_TRUE(FolderLock::take(file, &noLocks)) << "another process of the same number is gone";
  std::ofstream(file) << "another-machine " << mark.substr(mark.find(' ') + 1);
  EXPECT_FALSE(FolderLock::take(file, &noLocks)) << "of another machine nothing is known";
  std::ofstream(file, std::ios::trunc) << "";
  EXPECT_FALSE(FolderLock::take(file, &noLocks)) << "it is being written";
  fs::last_write_time(file, fs::file_time_type::clock::now() - std::chrono::hours(1));
  EXPECT_TRUE(FolderLock::take(file, &noLocks));
}

TEST_F(FileStoreTest, FilesGoWithTheirLastOwner) {
  const FileStore mine = store();
  auto folder = mine.claim("ID");
  write(folder->path() + "/deep/page.html");
  auto other = folder;
  folder.reset();
  EXPECT_TRUE(fs::exists(other->path()));
  const std::string path = other->path();
  other.reset();
  EXPECT_TRUE(await([&] { return !fs::exists(path); }));
}

TEST_F(FileStoreTest, KeepsShownCreativesWithinItsBudget) {
  FileStore mine = store(25);
  std::vector<std::string> paths;
  for (const char* hash : {"a", "b", "c"}) {
    const auto shown = creative(mine, hash);
    paths.push_back(shown->film->path());
    mine.shelf().add(shown);
    mine.shelf().keep(shown);
    if (hash == std::string("b")) mine.shelf().keep(mine.shelf().find(Campaign(json{{"hash", "a"}})).at(0));
  }
  EXPECT_TRUE(await([&] { return !fs::exists(paths[1]); })) << "not used for the longest time";
  EXPECT_TRUE(fs::exists(paths[0]) && fs::exists(paths[2]));
  EXPECT_TRUE(mine.shelf().find(Campaign(json{{"hash", "b"}})).empty());
  EXPECT_EQ(mine.shelf().find(Campaign(json{{"hash", "c"}})).size(), 1U);
  fs::remove(paths[2]);
  EXPECT_TRUE(mine.shelf().find(Campaign(json{{"hash", "c"}})).empty()) << "somebody removed its film";

  // One film under two pages counts once: both fit, beside the one that is kept.
  auto twin = creative(mine, "t");
  mine.shelf().add(twin);
  mine.shelf().keep(twin);
  auto other = std::make_shared<Creative>(*twin);
  other->folderBytes = 5;
  mine.shelf().add(other);
  mine.shelf().keep(other);
  twin.reset();
  other.reset();
  EXPECT_EQ(mine.shelf().find(Campaign(json{{"hash", "t"}})).size(), 2U);

  const auto nobodys = creative(mine, "");
  mine.shelf().add(nobodys);
  EXPECT_TRUE(mine.shelf().find(Campaign(json::object())).empty());
}

TEST_F(FileStoreTest, SharesTheFilmByItsHashAndThePageIfAllAgrees) {
  FileStore mine = store(1000);
  const json fields{{"endUrl", {"https://h/card.html"}}, {"tag", "t"}};
  const auto one = creative(mine, "h", 10, fields);
  mine.shelf().add(one);
  json same = fields;
  same["hash"] = "h";
  EXPECT_TRUE(mine.shelf().find(Campaign(same)).at(0)->hasPageOf(Campaign(same)));
  for (const char* field : {"type", "customImage", "baseUrl", "zippedUrl", "tag"}) {
    json other = same;
    other[field] = "playable";
    const auto found = mine.shelf().find(Campaign(other));
    ASSERT_EQ(found.size(), 1U) << field;
    EXPECT_FALSE(found[0]->hasPageOf(Campaign(other))) << field;
  }
  Creative waiting = *one;
  waiting.record = std::make_shared<Campaign>(json{{"hash", "h"}, {"tag", "another page"}});
  EXPECT_TRUE(waiting.isOnDisk());
  mine.shelf().forget(one);
  EXPECT_FALSE(waiting.isOnDisk()) << "nobody shows that film again";
  EXPECT_TRUE(mine.shelf().find(Campaign(same)).empty()) << "its showing failed";
}

TEST_F(FileStoreTest, GivesUpTheOldestOnAFullDiskAlone) {
  FileStore mine = store(1000);
  const Error full = posixError(ENOSPC, "write", "x");
  EXPECT_FALSE(mine.shelf().makeRoom(full)) << "nothing to give";
  auto old = creative(mine, "old");
  const auto onScreen = creative(mine, "on screen");
  auto young = creative(mine, "young");
  for (const auto& each : {onScreen, old, young}) mine.shelf().keep(each);
  const std::string path = old->film->path();
  old.reset();
  EXPECT_FALSE(mine.shelf().makeRoom(posixError(EIO, "write", "x")));
  EXPECT_TRUE(mine.shelf().makeRoom(full));
  EXPECT_FALSE(fs::exists(path)) << "at once: its space is needed";
  EXPECT_TRUE(fs::exists(onScreen->film->path())) << "somebody else owns it";

  auto twin = std::make_shared<Creative>(*young);
  const std::string shared = young->film->path();
  mine.shelf().keep(twin);
  young.reset();
  EXPECT_FALSE(mine.shelf().makeRoom(full)) << "its film would stay";
  twin.reset();
  EXPECT_TRUE(mine.shelf().makeRoom(full));
  EXPECT_FALSE(fs::exists(shared)) << "both have gone";
}

}  // namespace
}  // namespace vantorium
