#pragma once

#include <functional>
#include <string>

#include <vantorium/export.h>

#include "platform/ui/view_controller.hpp"

namespace vantorium::ui {

class Label;

/// The sheet that offers the advertised application: it names the product, opens its store page and is closed
/// by its user. Main thread only. Hosts may derive from it to show more of the product.
class VANTORIUM_HOST_API StoreProductViewController : public ViewController {
 public:
  explicit StoreProductViewController(Application& application);
  const char* className() const override { return "StoreProductViewController"; }

  /// Which product the sheet shows. An empty identifier is a product without a name and a store page.
  virtual void loadProduct(std::string productID);
  const std::string& productID() const { return productID_; }

  /// Called when the user has closed the sheet; the sheet does not dismiss itself. Held until replaced.
  void setFinishHandler(std::function<void()> handler) { finished_ = std::move(handler); }
  /// The user closes the sheet.
  void finish();

  bool handleBack() override;

 protected:
  std::shared_ptr<View> loadView() override;
  void viewDidLoad() override;

 private:
  void openStorePage();

  std::string productID_;
  std::function<void()> finished_;
  std::shared_ptr<Label> nameLabel_;
};

}  // namespace vantorium::ui
