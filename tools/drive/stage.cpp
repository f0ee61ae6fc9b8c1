#include "drive/stage.hpp"

namespace vantorium::drive {

namespace {

constexpr Seconds patienceAtTheEnd{5};

}  // namespace

Stage::Stage(const StageOptions& options, Output& output)
    : output_(output),
      clock_(options.clock),
      host_(std::make_shared<headless::Host>(
          headless::Host::Options{.home = options.home, .clock = options.clock})),
      lease_(host_) {
  host_->setEventObserver([&output](const nlohmann::json& event) { output.print(event); });
  host_->loop().setDecorator([&output](std::function<void()> work) -> std::function<void()> {
    return [&output, count = output.heldSoFar(), work = std::move(work)] {
      output.release(count);
      work();
    };
  });
  sdk_ = Sdk::make(lease_->lend());
  if (const auto error = sdk_->setServiceConfiguration(options.service))
    throw Refusal(error->localizedDescription());
  setDelegate(std::make_shared<ScriptDelegate>([this](nlohmann::json event) { tell(std::move(event)); }));
}

Stage::~Stage() { end(); }

void Stage::answer(const Command& command, nlohmann::json event) {
  if (!command.tag().is_null()) event["tag"] = command.tag();
  tell(std::move(event));
}

void Stage::setDelegate(std::shared_ptr<ScriptDelegate> delegate) {
  delegate_ = std::move(delegate);
  sdk_->context()->setDelegate(delegate_);
}

bool Stage::end() {
  output_.close();
  if (sdk_) sdk_->shutdown();
  for (const auto& [name, view] : nativeViews) view->removeFromSuperview();
  nativeViews.clear();
  ads.clear();
  sdk_.reset();
  return lease_->awaitReturn(patienceAtTheEnd);
}

}  // namespace vantorium::drive
