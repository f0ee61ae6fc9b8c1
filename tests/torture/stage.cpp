#include "torture/stage.hpp"

#include <fmt/format.h>

#include <algorithm>

#include "torture/stage_delegate.hpp"

namespace vantorium::torture {

namespace fs = std::filesystem;

namespace {

constexpr double patience = 20;      // real seconds; what takes longer hangs, on a busy machine too
constexpr double patienceAfter = 1;  // once something hung

}  // namespace

Stage::Stage(fs::path home, const Setting& setting, Record& record)
    : home_(std::move(home)),
      setting_(setting),
      record_(record),
      delegate_(std::make_shared<Delegate>()),
      patience_(patience) {
  descriptorsBefore_ = descriptors();
  launch();
}

void Stage::launch() {
  host_ = headless::makeHost({.home = home_});
  act("launching", [this] {
    auto error = Vantorium::setHost(host_);
    return error ? error
                 : Vantorium::setDeveloperSettings(
                       {.baseURL = setting_.service, .widgetURL = setting_.service});
  });
  Vantorium::setAutoCaching(false);
  Vantorium::setDelegate(delegate_);
}

void Stage::note(const std::string& problem) { record_.problems.add(problem + "\n"); }

std::string Stage::lastError() const {
  const auto failed =
      std::find_if(calls_.rbegin(), calls_.rend(), [](const auto& call) { return !call->succeeded; });
  return failed == calls_.rend() ? "" : (*failed)->name + ": " + (*failed)->error;
}

bool Stage::act(const std::string& what, const std::function<std::optional<Error>()>& deed) {
  record_.step.fill(0);
  what.copy(record_.step.data(), record_.step.size() - 1);
  std::optional<Error> refusal;
  try {
    const NotExempt sdk;
    refusal = deed();
  } catch (const std::exception& error) {
    note(fmt::format("{} threw: {}", what, error.what()));
    return false;
  }
  if (refusal) note(fmt::format("{} is not possible: {}", what, refusal->localizedDescription()));
  return !refusal;
}

bool Stage::await(const std::string& what, const std::function<bool()>& isSo) {
  // Work of the main queue that throws leaves the loop; what came before and comes after it is to go on.
  for (int interruptions = 0; interruptions < 5; ++interruptions) {
    bool isDone = false;
    bool isThrough = false;
    act(what, [&]() -> std::optional<Error> {
      isDone = headless::runUntil(
          *host_,
          [&] {
            const Exempt exempt;
            return isSo();
          },
          patience_);
      isThrough = true;
      return std::nullopt;
    });
    if (isDone) return true;
    if (isThrough) break;
  }
  note("hang: " + what);
  patience_ = patienceAfter;
  return false;
}

std::shared_ptr<Call> Stage::begin(const std::string& name, const Start& start) {
  auto call = std::make_shared<Call>(Call{.name = name});
  calls_.push_back(call);
  Vantorium::Completion completion = [call](bool success, const std::optional<Error>& error) {
    const Exempt exempt;
    ++call->completions;
    call->succeeded = success && !error;
    if (error) call->error = error->localizedDescription();
  };
  call->hasThrown = !act(name, [&]() -> std::optional<Error> {
    start(std::move(completion));
    return std::nullopt;
  });
  return call;
}

bool Stage::end(const std::shared_ptr<Call>& call) {
  if (call->hasThrown) return false;
  return await("completion of " + call->name, [call] { return call->completions > 0; }) && call->succeeded;
}

bool Stage::fetchNativeAds(const std::string& placement, Vantorium::NativeAds& ads) {
  return call("precacheNativeAds", [&](Vantorium::Completion completion) {
    Vantorium::NativeAdsCompletion noting = [&ads, completion = std::move(completion)](
                                                Vantorium::NativeAds fetched,
                                                const std::optional<Error>& error) {
      {
        const Exempt exempt;
        ads = std::move(fetched);
      }
      completion(!error, error);
    };
    Vantorium::precacheNativeAds(placement, std::move(noting));
  });
}

bool Stage::isInFront() { return headless::snapshot(*host_) != "null"; }

bool Stage::isShown(const std::shared_ptr<Call>& call) {
  return !call->hasThrown &&
         await("screen of " + call->name, [&] { return call->completions > 0 || isInFront(); }) &&
         isInFront();
}

void Stage::shutDown() {
  act("shutdown", []() -> std::optional<Error> {
    Vantorium::shutdown();
    return std::nullopt;
  });
  const auto hasCompleted = [](const auto& call) { return call->completions > 0 || call->hasThrown; };
  await("completions after shutdown",
        [&] { return std::all_of(calls_.begin(), calls_.end(), hasCompleted); });
}

void Stage::relaunch() {
  shutDown();
  launch();
}

}  // namespace vantorium::torture
