#include "sandbox/service/variety.hpp"

#include <string>

#include "sandbox/service/catalogue.hpp"

namespace vantorium::sandbox {

using nlohmann::json;

namespace {

constexpr std::uint64_t someValues = 10;

// A text that is nothing but the placeholder becomes the number itself.
void fillInNumber(json& value, const std::string& placeholder, std::uint64_t number) {
  if (value == placeholder) {
    value = number;
  } else if (value.is_structured()) {
    for (auto& element : value) fillInNumber(element, placeholder, number);
  }
}

}  // namespace

void Variety::vary(json& record) {
  std::uint64_t count = 0;
  std::uint64_t some = 0;
  {
    const std::lock_guard lock(mutex_);
    count = ++count_;
    some = random_() % someValues;
    const auto choices = record.find("anyOf");
    if (choices != record.end() && choices->is_array() && !choices->empty()) {
      json chosen = (*choices)[random_() % choices->size()];
      record = std::move(chosen);
    }
  }
  for (const auto& [placeholder, number] : {std::pair{"{{count}}", count}, std::pair{"{{some}}", some}}) {
    fillInNumber(record, placeholder, number);
    fillIn(record, placeholder, std::to_string(number));
  }
}

std::uint64_t Variety::count() const {
  const std::lock_guard lock(mutex_);
  return count_;
}

}  // namespace vantorium::sandbox
