#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <vantorium/headless.hpp>
#include <vantorium/vantorium.hpp>

#include "torture/inventory.hpp"
#include "torture/record.hpp"

namespace vantorium::torture {

/// A call that was made and what came of it.
struct Call {
  std::string name{};
  int completions = 0;
  bool succeeded = false;
  std::string error{};
  bool hasThrown = false;
};

/// What the runs of a scenario have in common.
struct Setting {
  std::string service;         ///< its address
  const Catalogue* catalogue;  ///< what it serves
  Inventory expected;          ///< of a run without a fault; empty in that run itself
};

/// An application on a headless host, in a process of its own: calls the SDK, and notes what should not be.
/// Main thread, which is exempt from the fault but while the SDK works on it.
class Stage {
 public:
  Stage(std::filesystem::path home, const Setting& setting, Record& record);

  /// Has the SDK or the host do something, which is to be possible; false if it was not or threw, which is
  /// noted.
  bool act(const std::string& what, const std::function<std::optional<Error>()>& deed);
  /// Runs the main queue until it is so; notes a hang if it takes too long.
  bool await(const std::string& what, const std::function<bool()>& isSo);
  using Start = std::function<void(Vantorium::Completion)>;
  std::shared_ptr<Call> begin(const std::string& name, const Start& start);
  /// Awaits its completion; whether that told success.
  bool end(const std::shared_ptr<Call>& call);
  bool call(const std::string& name, const Start& start) { return end(begin(name, start)); }
  bool fetchNativeAds(const std::string& placement, Vantorium::NativeAds& ads);

  /// An ad's screen is in front; awaits that or the call's end.
  bool isShown(const std::shared_ptr<Call>& call);
  bool isInFront();
  /// The reward has come by now, or comes when the SDK asks again.
  void expectReward();
  /// A file that an ad uses, or the whole folder of a page.
  void meet(const std::string& label, const std::filesystem::path& path);
  /// Checks what film and page the ad on screen was given; whether there were any.
  void meetWhatIsShown();

  /// Nothing is under way, so nothing may seem to be.
  void checkFlags();
  /// Ends the SDK and starts it again, as the application's next launch on the same home does.
  void relaunch();
  /// Each placement has been announced, or it hangs; by and by, without the fault, all of them are ready.
  void expectAutoCaching(const std::vector<std::string>& placements);
  /// Shuts the SDK down and looks at what is left of it.
  void checkEnd();

  void note(const std::string& problem);
  /// What the latest call that failed said.
  std::string lastError() const;
  Host& host() { return *host_; }

 private:
  class Delegate;

  void launch();
  void shutDown();
  void check(const std::string& line);
  bool isExpected(const std::string& line) const;
  bool hasKeptFromRemoving() const;
  void awaitWorkers();
  std::set<std::string> descriptors() const;

  const std::filesystem::path home_;
  const Setting& setting_;
  Record& record_;
  std::set<std::string> descriptorsBefore_;
  std::shared_ptr<Host> host_;
  std::shared_ptr<Delegate> delegate_;
  std::vector<std::shared_ptr<Call>> calls_;
  int rewardsExpected_ = 0;
  double patience_;
};

}  // namespace vantorium::torture
