// Queues of the SDK and of the application's making.
#include "bindings/c/callback.hpp"

namespace vantorium::c {

namespace {

/// A queue whose work the application runs.
class ApplicationQueue final : public DispatchQueue {
 public:
  ApplicationQueue(vantorium_queue_handler handler, void* data, vantorium_callback free)
      : handler_(handler), data_(data, free) {}

  void async(std::function<void()> work) override {
    handler_(data_.get(), give<vantorium_work>(std::make_shared<Work>(std::move(work))));
  }

 private:
  const vantorium_queue_handler handler_;
  UserData data_;
};

}  // namespace

}  // namespace vantorium::c

using namespace vantorium;
using namespace vantorium::c;

vantorium_queue* vantorium_queue_serial_new(const char* label) {
  return call<vantorium_queue*>(
      nullptr, [&] { return give<vantorium_queue>(DispatchQueue::serial(text(label, "label"))); });
}

vantorium_queue* vantorium_queue_new(vantorium_queue_handler async, void* user_data,
                                     vantorium_callback free_user_data) {
  return call<vantorium_queue*>(nullptr, [&] {
    auto queue = std::make_shared<ApplicationQueue>(async, user_data, free_user_data);
    if (async == nullptr) refuse("\"async\" is null. Give a function that gets the work.");
    return give<vantorium_queue>(std::move(queue));
  });
}

bool vantorium_work_run(vantorium_work* work) {
  return perform([&] { (*std::static_pointer_cast<Work>(taken(work, {Kind::work}, "work").object))(); });
}

bool vantorium_queue_async(vantorium_queue* queue, vantorium_callback work, void* user_data,
                           vantorium_callback free_user_data) {
  return perform([&] {
    const Callback<vantorium_callback> callback(work, user_data, free_user_data);
    if (work == nullptr) refuse("\"work\" is null. Give a function.");
    object(queue, "queue")->async([callback] {
      callback.once([](vantorium_callback run, void* data) { run(data); });
    });
  });
}
