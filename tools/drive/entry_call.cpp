#include "drive/entry_call.hpp"

#include <utility>

#include "drive/records.hpp"

namespace vantorium::drive {

namespace {

thread_local bool isOnQueue = false;

class BackgroundQueue : public DispatchQueue {
 public:
  explicit BackgroundQueue(std::shared_ptr<DispatchQueue> mainQueue) : mainQueue_(std::move(mainQueue)) {}

  void async(std::function<void()> work) override {
    mainQueue_->async([work = std::move(work)] {
      std::thread([&work] {
        isOnQueue = true;
        work();
      }).join();
    });
  }

 private:
  const std::shared_ptr<DispatchQueue> mainQueue_;
};

bool isBackground(const Command& command, const std::string& field) {
  return command.choiceIfAny<bool>(field, {{"main", false}, {"background", true}}).value_or(false);
}

}  // namespace

EntryCall::EntryCall(Stage& stage, const Command& command)
    : stage_(stage),
      name_(command.name()),
      tag_(command.tag()),
      isFromBackground_(isBackground(command, "from")),
      isQueueBackground_(isBackground(command, "queue")) {}

std::shared_ptr<DispatchQueue> EntryCall::queue() const {
  return isQueueBackground_ ? std::make_shared<BackgroundQueue>(stage_.host().mainQueue()) : nullptr;
}

void EntryCall::make(const std::function<void()>& call) const {
  stage_.wasUsed = true;
  const auto run = [&] {
    site_->caller = std::this_thread::get_id();
    site_->isInside = true;
    call();
    site_->isInside = false;
  };
  if (isFromBackground_) {
    std::thread(run).join();
  } else {
    run();
  }
}

const char* EntryCall::Site::threadName() const {
  const auto current = std::this_thread::get_id();
  if (isInside && current == caller) return "caller";
  if (isOnQueue) return "queue";
  return current == mainThread ? "main" : "callback";
}

Sdk::Completion EntryCall::completion() const {
  return [call = *this](bool success, const std::optional<Error>& error) {
    call.complete(success, error, nlohmann::json::object());
  };
}

void EntryCall::complete(bool success, const std::optional<Error>& error, nlohmann::json more) const {
  more.update({{"event", "completion"},
               {"of", name_},
               {"tag", tag_},
               {"success", success},
               {"error", toJSON(error)},
               {"thread", site_->threadName()}});
  stage_.tell(std::move(more));
}

void EntryCall::result(nlohmann::json value) const {
  stage_.tell({{"event", "result"}, {"of", name_}, {"tag", tag_}, {"value", std::move(value)}});
}

}  // namespace vantorium::drive
