#pragma once

#include <map>
#include <string>

#include "torture/stage.hpp"

namespace vantorium::torture {

/// Counts what it hears. Main thread.
class Stage::Delegate : public VantoriumDelegate {
 public:
  int rewards = 0;
  std::map<std::string, int> announcements;  // of each placement

  void didReceiveReward(const std::string&, std::int64_t) override { ++rewards; }
  void didPrecache(const std::string& placement) override { heard(placement); }
  void didFailPrecache(const std::string& placement, const std::optional<Error>&) override {
    heard(placement);
  }

 private:
  void heard(const std::string& placement) {
    const Exempt exempt;
    ++announcements[placement];
  }
};

}  // namespace vantorium::torture
