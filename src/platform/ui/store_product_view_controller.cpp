#include "platform/ui/store_product_view_controller.hpp"

#include "platform/ui/application.hpp"
#include "platform/ui/controls.hpp"
#include "platform/ui/interface_file.hpp"

namespace vantorium::ui {

namespace {

bool isUpper(char letter) { return letter >= 'A' && letter <= 'Z'; }

/// What a person would call the product: stores of this kind of device name it like "org.example.SkyHarbor".
/// Other identifiers stand for themselves.
std::string productName(const std::string& productID) {
  const std::size_t dot = productID.rfind('.');
  if (dot == std::string::npos || dot + 1 == productID.size()) return productID;
  std::string name;
  for (std::size_t i = dot + 1; i < productID.size(); ++i) {
    const bool startsWord = isUpper(productID[i]) && !isUpper(productID[i - 1]) && !name.empty();
    if (startsWord) name += ' ';
    name += productID[i] == '_' || productID[i] == '-' ? ' ' : productID[i];
  }
  return name;
}

}  // namespace

StoreProductViewController::StoreProductViewController(Application& application)
    : ViewController(application) {}

void StoreProductViewController::loadProduct(std::string productID) {
  productID_ = std::move(productID);
  if (nameLabel_) nameLabel_->setText(productName(productID_));
}

void StoreProductViewController::finish() {
  // A copy: what hears of the end usually releases this sheet.
  if (const auto handler = finished_) handler();
}

bool StoreProductViewController::handleBack() {
  finish();
  return true;
}

std::shared_ptr<View> StoreProductViewController::loadView() {
  InterfaceConnections connections;
  connections.outlets["productNameLabel"] = [this](const std::shared_ptr<View>& view) {
    nameLabel_ = std::static_pointer_cast<Label>(view);
  };
  connections.actions["open"] = [this] { openStorePage(); };
  connections.actions["finish"] = [this] { finish(); };
  return loadInterface("StoreProductViewController", connections);
}

void StoreProductViewController::viewDidLoad() { nameLabel_->setText(productName(productID_)); }

void StoreProductViewController::openStorePage() {
  if (!productID_.empty()) application().openURL(application().storeURL(productID_));
}

}  // namespace vantorium::ui
