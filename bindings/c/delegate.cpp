#include "bindings/c/delegate.hpp"

#include <algorithm>
#include <cstring>

#include "bindings/c/callback.hpp"

namespace vantorium::c {

namespace {

/// A delegate whose methods are functions of the application.
class ApplicationDelegate final : public VantoriumDelegate {
 public:
  ApplicationDelegate(const vantorium_delegate_methods& methods, void* data, vantorium_callback free)
      : methods_(methods), data_(data, free) {}

  bool respondsTo(DelegateMethod method) const override {
    switch (method) {
      case DelegateMethod::didReceiveReward:
        return methods_.did_receive_reward != nullptr;
      case DelegateMethod::didPrecache:
        return methods_.did_precache != nullptr;
      case DelegateMethod::didFailPrecache:
        return methods_.did_fail_precache != nullptr;
      case DelegateMethod::didReceiveClick:
        return methods_.did_receive_click != nullptr;
      case DelegateMethod::didConfigure:
        return methods_.did_configure != nullptr;
      case DelegateMethod::didFailConfigure:
        return methods_.did_fail_configure != nullptr;
    }
    return false;
  }

  void didReceiveReward(const std::string& placement, std::int64_t amount) override {
    methods_.did_receive_reward(data_.get(), placement.c_str(), amount);
  }
  void didPrecache(const std::string& placement) override {
    methods_.did_precache(data_.get(), placement.c_str());
  }
  void didFailPrecache(const std::string& placement, const std::optional<Error>& error) override {
    methods_.did_fail_precache(data_.get(), placement.c_str(), lend(error).get());
  }
  void didReceiveClick(const std::string& placement) override {
    methods_.did_receive_click(data_.get(), placement.c_str());
  }
  void didConfigure() override { methods_.did_configure(data_.get()); }
  void didFailConfigure(const std::optional<Error>& error) override {
    methods_.did_fail_configure(data_.get(), lend(error).get());
  }

  vantorium_delegate* handle =
      nullptr;  ///< while the application has one; set before anybody else knows this

 private:
  const vantorium_delegate_methods methods_;
  UserData data_;
};

/// Programs of other versions have fewer methods, or more; none has half a one.
std::size_t wholePointers(std::size_t size) { return size - size % sizeof(void*); }

}  // namespace

vantorium_delegate* handleOf(std::shared_ptr<VantoriumDelegate> delegate) {
  const auto* const own = dynamic_cast<const ApplicationDelegate*>(delegate.get());
  if (own != nullptr && HandleTable::shared().retain(own->handle)) return own->handle;
  return give<vantorium_delegate>(std::move(delegate));
}

}  // namespace vantorium::c

using namespace vantorium;
using namespace vantorium::c;

vantorium_delegate* vantorium_delegate_new(const vantorium_delegate_methods* methods, void* user_data,
                                           vantorium_callback free_user_data) {
  return call<vantorium_delegate*>(nullptr, [&] {
    vantorium_delegate_methods known{};
    if (methods != nullptr)
      std::memcpy(&known, methods, wholePointers(std::min(methods->size, sizeof known)));
    auto delegate = std::make_shared<ApplicationDelegate>(known, user_data, free_user_data);
    if (methods == nullptr) refuse("\"methods\" is null. Give the delegate's methods.");
    if (known.size < sizeof known.size)
      refuse("\"size\" of the methods is not set. Set it to sizeof(vantorium_delegate_methods).");
    delegate->handle = give<vantorium_delegate>(delegate);
    return delegate->handle;
  });
}
