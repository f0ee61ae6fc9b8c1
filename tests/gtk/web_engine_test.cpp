#include "hosts/gtk/web_engine.hpp"

#include <netinet/in.h>
#include <sys/socket.h>

#include <nlohmann/json.hpp>

#include "gtk/support/desktop.hpp"
#include "hosts/gtk/page_confinement.hpp"
#include "platform/foundation/file_descriptor.hpp"
#include "platform/foundation/url.hpp"

namespace vantorium::test {
namespace {

class PageTest : public DesktopTest {
 protected:
  PageTest() {
    engine->setHandlers(
        {[this](const std::string& url, WebViewNavigationType type) { return decide(url, type); },
         [this](const Error& error) { failures.push_back(error); }});
    // A page is shown like any view.
    auto screen = std::make_shared<ui::ViewController>(host->application());
    present(screen);
    engine->setFrame(screen->view().bounds());
    screen->view().addSubview(engine);
    draw();
  }

  virtual bool decide(const std::string& url, WebViewNavigationType type) {
    navigations.push_back(url);
    types.push_back(type);
    if (onNavigation) onNavigation(url);
    return url.find("refused") == std::string::npos;
  }

  bool sawNavigation(const std::string& url) const {
    return std::find(navigations.begin(), navigations.end(), url) != navigations.end();
  }

  std::string title() const {
    const char* const text = webkit_web_view_get_title(engine->webView());
    return text != nullptr ? text : "";
  }

  void load(const std::string& page) { engine->loadFile(page, std::filesystem::path(page).parent_path()); }

  std::shared_ptr<gtk::WebKitEngine> engine =
      std::dynamic_pointer_cast<gtk::WebKitEngine>(host->makeWebEngine());
  std::vector<std::string> navigations;
  std::vector<WebViewNavigationType> types;
  std::vector<Error> failures;
  std::function<void(const std::string&)> onNavigation;
};

// Tries every way to a file that a page has, each into and out of its folder, and puts what it got into its
// title.
constexpr const char* probe = R"html(<!doctype html><html><head>
<link rel=stylesheet href="own.css"><link rel=stylesheet href="../secret/other.css"></head><body><script>
let ownScript = false, otherScript = false, pending = 0; const got = {};
function attempt(name, start) {
  ++pending;
  const done = value => { if (name in got) return; got[name] = value; if (--pending == 0) setTimeout(finish, 100); };
  try { start(done); } catch (error) { done(''); }
  setTimeout(() => done(''), 2500);  // a frame that is refused says nothing
}
const image = url => done => { const i = new Image; i.onload = () => done('shown'); i.onerror = () => done(''); i.src = url; };
const frame = url => done => {
  const f = document.createElement('iframe');
  f.onload = () => { let text = ''; try { text = f.contentDocument.body.innerText.trim(); } catch (e) {} done(text); };
  f.src = url; document.body.appendChild(f); };
const fetched = url => done => fetch(url).then(r => r.text()).then(t => done(t.trim())).catch(() => done(''));
const requested = url => done => { const x = new XMLHttpRequest; x.onload = () => done(x.responseText.trim());
  x.onerror = () => done(''); x.open('GET', url); x.send(); };
const inWorker = url => done => { const code = `fetch('${new URL(url, location)}').then(r => r.text()).then(t =>
  postMessage(t.trim())).catch(() => postMessage(''))`; const w = new Worker(URL.createObjectURL(new Blob([code])));
  w.onmessage = e => done(e.data); w.onerror = () => done(''); };
for (const [kind, start, file] of [['image', image, 'picture.svg'], ['frame', frame, 'text.txt'],
    ['fetch', fetched, 'text.txt'], ['request', requested, 'text.txt'], ['worker', inWorker, 'text.txt']]) {
  attempt(kind + ' own', start(file));
  const other = { plain: '../secret/' + file, encoded: '..%2fsecret/' + file, dots: '%2e%2e/secret/' + file,
                  local: 'file://localhost' + location.pathname.replace('own%20pages/page.html', 'secret/' + file) };
  for (const way in other) attempt(kind + ' other ' + way, start(other[way]));
}
function finish() {
  const style = getComputedStyle(document.body);
  got['script own'] = ownScript ? 'run' : ''; got['script other'] = otherScript ? 'run' : '';
  got['style own'] = style.color == 'rgb(1, 2, 3)' ? 'used' : '';
  got['style other'] = style.backgroundColor == 'rgb(4, 5, 6)' ? 'used' : '';
  document.title = JSON.stringify(got);
}
</script><script src="own.js"></script><script src="../secret/other.js"></script></body></html>)html";

TEST_F(PageTest, ReadsItsFolderAndNothingElse) {
  constexpr const char* picture = "<svg xmlns='http://www.w3.org/2000/svg' width='8' height='8'/>";
  for (const char* place : {"own pages/", "secret/"}) {
    write(std::string(place) + "text.txt", place);
    write(std::string(place) + "picture.svg", picture);
  }
  write("own pages/own.css", "body { color: rgb(1, 2, 3) }");
  write("own pages/own.js", "ownScript = true");
  write("secret/other.css", "body { background: rgb(4, 5, 6) }");
  write("secret/other.js", "otherScript = true");
  load(write("own pages/page.html", probe));
  ASSERT_TRUE(waitFor([&] { return !title().empty() && title().front() == '{'; }));
  const auto results = nlohmann::json::parse(title());
  EXPECT_EQ(results.size(), 29U);
  for (const auto& [what, result] : results.items()) {
    const bool isOwn = what.find("own") != std::string::npos;
    EXPECT_EQ(result.get<std::string>().empty(), !isOwn) << what << ": " << result;
  }
}

TEST_F(PageTest, CannotLeaveForOtherFiles) {
  write("secret/other.html", "<title>stolen</title>");
  load(write("pages/page.html",
             "<title>page</title><script>onload = () => { location = '../secret/other.html'; "
             "setTimeout(() => document.title = 'still here', 300); }</script>"));
  ASSERT_TRUE(waitFor([&] { return title() == "still here"; }));

  EXPECT_TRUE(gtk::mayNavigate("file:///a%20b/page.html?x#y", "/a b"));
  EXPECT_TRUE(gtk::mayNavigate("https://example.com/", "/a b"));
  for (const char* url : {"file:///a%20b", "file:///a%20bc/page.html", "file:///a%20b/..%2Fsecret",
                          "FILE:///etc/passwd", "file://server/a%20b/x"}) {
    EXPECT_FALSE(gtk::mayNavigate(url, "/a b")) << url;
  }
}

TEST_F(PageTest, AFolderWithALinkThatLeadsOutIsNotLoaded) {
  write("secret/text.txt", "secret");
  const std::string page = write("pages/page.html", "<title>page</title>");
  std::filesystem::create_symlink("page.html", folder.path() / "pages/inner");
  EXPECT_TRUE(gtk::isSelfContained(folder.path() / "pages"));
  std::filesystem::create_directory_symlink("../secret", folder.path() / "pages/outer");
  EXPECT_FALSE(gtk::isSelfContained(folder.path() / "pages"));
  load(page);
  ASSERT_TRUE(waitFor([&] { return !failures.empty(); }));
  EXPECT_TRUE(navigations.empty());
}

TEST_F(PageTest, CommandsReachTheScreenAndLeaveThePage) {
  load(write("pages/page.html",
             "<title>page</title><script>onload = () => { const f = document.createElement('iframe'); "
             "f.src = 'closead://frame'; document.body.appendChild(f); window.open('closead://window'); "
             "location = 'CLOSEAD://main'; setTimeout(() => location = 'refused://x', 50); "
             "setTimeout(() => document.title = 'still here', 200); }</script><body></body>"));
  ASSERT_TRUE(waitFor([&] { return title() == "still here" && sawNavigation("refused://x"); }));
  EXPECT_TRUE(sawNavigation("closead://frame"));
  EXPECT_TRUE(sawNavigation("closead://window"));
  EXPECT_TRUE(sawNavigation("closead://main"));
  EXPECT_EQ(types.front(), WebViewNavigationType::other);
  EXPECT_TRUE(failures.empty());
}

TEST_F(PageTest, ALoadStartedByACommandGoesOn) {
  const FileDescriptor bound(::socket(AF_INET, SOCK_STREAM, 0));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  ASSERT_EQ(::bind(bound.get(), reinterpret_cast<sockaddr*>(&address), size), 0);
  ASSERT_EQ(::getsockname(bound.get(), reinterpret_cast<sockaddr*>(&address), &size), 0);
  const std::string url = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/click";

  onNavigation = [&](const std::string& seen) {
    if (seen == "reportclick://x") engine->loadRequest(url);
  };
  load(write("pages/page.html",
             "<title>page</title><script>onload = () => location = 'reportclick://x'</script>"));
  ASSERT_TRUE(waitFor([&] { return !failures.empty(); })) << "nobody listens there";
  EXPECT_TRUE(sawNavigation(url));
  EXPECT_EQ(failures.size(), 1U);
  EXPECT_EQ(title(), "page") << "a failed load leaves the page that was there";
}

TEST_F(PageTest, ALaterLoadTakesThePlaceOfAnEarlierOne) {
  const std::string first = write("pages/first.html", "<title>first</title>");
  const std::string second = write("pages/second.html", "<title>second</title>");
  load(first);
  load(second);
  ASSERT_TRUE(waitFor([&] { return title() == "second"; }));
  EXPECT_EQ(navigations, std::vector<std::string>{fileURL(second)});
}

TEST_F(PageTest, MayBeDestroyedWhileItAsksOrLoads) {
  const std::string page =
      write("pages/page.html", "<script>onload = () => location = 'closead://x'</script>");
  bool asked = false;
  auto other = host->makeWebEngine();
  WebEngine* const raw = other.get();
  raw->setHandlers({[&](const std::string& url, WebViewNavigationType) {
                      if (url == "closead://x") {
                        asked = true;
                        other.reset();
                      }
                      return true;
                    },
                    [](const Error&) { FAIL() << "a released page speaks"; }});
  raw->loadFile(page, folder.path() / "pages");
  ASSERT_TRUE(waitFor([&] { return asked; }));
  settle();

  host->makeWebEngine()->loadFile(page, folder.path() / "pages");
  host->makeWebEngine()->loadRequest("about:blank");
  load(page);
  ASSERT_TRUE(waitFor([&] { return sawNavigation("closead://x"); })) << "other pages go on";
}

TEST_F(PageTest, AsksTheUserNothing) {
  load(write("pages/page.html",
             "<script>onload = () => { alert('a'); const yes = confirm('b'); const text = prompt('c'); "
             "navigator.geolocation.getCurrentPosition(() => document.title = 'found', "
             "error => document.title = [yes, text, error.code].join()); }</script>"));
  ASSERT_TRUE(waitFor([&] { return !title().empty(); }));
  EXPECT_EQ(title(), "false,,1");
}

TEST_F(PageTest, AHiddenPageKnowsItsSizeAndMakesNoSound) {
  auto* const view = engine->webView();
  EXPECT_TRUE(webkit_web_view_get_is_muted(view)) << "no sound before it has the screen";
  engine->setAudible(true);
  EXPECT_FALSE(webkit_web_view_get_is_muted(view));
  engine->setHidden(true);
  draw();
  EXPECT_TRUE(webkit_web_view_get_is_muted(view));
  engine->setFrame({0, 0, 320, 200});
  draw();
  load(write("pages/page.html",
             "<script>onload = () => document.title = innerWidth + ' ' + innerHeight</script>"));
  ASSERT_TRUE(waitFor([&] { return !title().empty(); }));
  EXPECT_EQ(title(), "320 200");
}

}  // namespace
}  // namespace vantorium::test
