#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <set>

#include <vantorium/error.hpp>

#include "platform/foundation/files.hpp"
#include "platform/foundation/url.hpp"
#include "support/temporary_directory.hpp"

namespace vantorium {
namespace {

namespace fs = std::filesystem;

std::set<std::string> namesIn(const fs::path& directory) {
  std::set<std::string> names;
  for (const auto& entry : fs::directory_iterator(directory)) names.insert(entry.path().filename());
  return names;
}

TEST(ErrorTest, CarriesTheTextsThatTheApplicationAndTheReportsSee) {
  EXPECT_EQ(VantoriumError::notConfigured().localizedDescription(),
            "Vantorium framework is not configured. Domain: com.vantorium Code: 1");
  EXPECT_EQ(VantoriumError::internalError().errorMessage(),
            "Unexpected internal error. Domain: com.vantorium Code: 2");
  EXPECT_EQ(VantoriumError::internalError("No campaigns").errorMessage(),
            "No campaigns Domain: com.vantorium Code: 2");
  EXPECT_EQ(VantoriumError::noPrecachedDataToShow("").localizedDescription(),
            " Domain: com.vantorium Code: 4");

  const Error platform = Error::platform("com.vantorium", 2, "for people", "for reports");
  EXPECT_EQ(platform.errorMessage(), "for reports");
  EXPECT_EQ(Error::platform("posix", 2, "for people").errorMessage(), "for people");
  EXPECT_FALSE(VantoriumError::is(platform, VantoriumError::internalErrorCode));
  EXPECT_TRUE(
      VantoriumError::is(VantoriumError::functionInProgress(), VantoriumError::functionInProgressCode));
}

TEST(URLTest, TellsURLsFromOtherText) {
  for (const char* text : {"https://h/a", "HTTPS://H", "a/b?c=d#e", "http://u:p@[::1]:80/x", "mailto:a@b",
                           "?", "//h/x", "http://h/%41", "file:///a", "http://h?a?b/c", "./a:b"}) {
    EXPECT_TRUE(URL::parse(text)) << text;
  }
  for (const char* text :
       {"", " ", "http://h/a b", "http://h/\n", "http://h/%4", "http://h/%zz", "http://h/ä", "1a:b", ":x",
        "http://h:8x/", "http://[::1", "http://[]/", "http://h/<>", "http://h#a#b"}) {
    EXPECT_FALSE(URL::parse(text)) << text;
  }
}

TEST(URLTest, SplitsAndDecodes) {
  const auto url = URL::parse("HtTp://me@Host.example:8080/a%20b/c%2Fd.tar.gz?x=/y.z#f.g");
  ASSERT_TRUE(url);
  EXPECT_EQ(url->scheme(), "http");
  EXPECT_EQ(url->host(), "Host.example");
  EXPECT_EQ(url->path(), "/a b/c/d.tar.gz");
  EXPECT_EQ(url->pathExtension(), "gz");
  EXPECT_EQ(URL::parse("http://[fe80::1]:9/")->host(), "fe80::1");
  EXPECT_EQ(URL::parse("http://h.com?q.mp4")->pathExtension(), "");
  EXPECT_EQ(URL::parse("/.hidden")->pathExtension(), "");
  EXPECT_EQ(URL::parse("/a.b/c")->pathExtension(), "");
}

TEST(URLTest, EncodesForTheServiceAndForFiles) {
  EXPECT_EQ(urlEncodedString("https://h/a b%20?x=ä&y=[1]#f"), "https://h/a%20b%2520?x=%C3%A4&y=%5B1%5D%23f");
  EXPECT_EQ(urlEncodedString("!$&'()*+,-./:;=?@_~"), "!$&'()*+,-./:;=?@_~");
  EXPECT_EQ(urlEncodedString("\xC3"), std::nullopt);
  EXPECT_EQ(fileURL("/a b/c?d#e%"), "file:///a%20b/c%3Fd%23e%25");
  EXPECT_EQ(percentDecoded("%41%4%"), "A%4%");
  EXPECT_EQ(URL::parse(fileURL("/a b/ü.html"))->path(), "/a b/ü.html");
}

TEST(UUIDTest, IsRandomAndOfTheUsualForm) {
  std::set<std::string> seen;
  for (int i = 0; i < 100; ++i) {
    const std::string uuid = makeUUID();
    EXPECT_TRUE(std::regex_match(
        uuid, std::regex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}")))
        << uuid;
    seen.insert(uuid);
  }
  EXPECT_EQ(seen.size(), 100U);
}

TEST(UTF8Test, RefusesWhatOnlyLooksLikeIt) {
  EXPECT_TRUE(isUTF8(std::string_view("a\0ä€😀", 11)));
  for (const char* bad : {"\x80", "\xC3", "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "a\xFF"}) {
    EXPECT_FALSE(isUTF8(bad));
  }
}

TEST(FilesTest, AWriteReplacesTheWholeFileOrNothing) {
  const testing::TemporaryDirectory directory;
  const fs::path path = directory.path() / std::string(255, 'n');
  std::optional<Error> error;
  EXPECT_FALSE(writeFileAtomically(path, "old"));
  EXPECT_FALSE(writeFileAtomically(path, std::string("n\0w", 3)));
  EXPECT_EQ(readFile(path, error), std::string("n\0w", 3));

  fs::create_directory(directory.path() / "folder");
  const auto refused = writeFileAtomically(directory.path() / "folder", "x");
  ASSERT_TRUE(refused);
  EXPECT_EQ(refused->domain(), "posix");
  EXPECT_EQ(refused->code(), EISDIR);
  EXPECT_TRUE(writeFileAtomically(directory.path() / "missing" / "file", "x"));
  EXPECT_EQ(namesIn(directory.path()), (std::set<std::string>{std::string(255, 'n'), "folder"}));
}

TEST(FilesTest, AFailedReadSaysWhatAndWhy) {
  const testing::TemporaryDirectory directory;
  std::optional<Error> error;
  EXPECT_FALSE(readFile(directory.path(), error));
  EXPECT_EQ(error->code(), EISDIR);
  EXPECT_FALSE(readFile(directory.path() / "missing", error));
  EXPECT_EQ(error->code(), ENOENT);
  EXPECT_NE(error->localizedDescription().find("missing: No such file"), std::string::npos);
  ASSERT_FALSE(writeFileAtomically(directory.path() / "latin", "\xE4"));
  EXPECT_FALSE(readTextFile(directory.path() / "latin", error));
  EXPECT_EQ(error->code(), EILSEQ);
}

}  // namespace
}  // namespace vantorium
