#pragma once

#include <optional>
#include <utility>
#include <variant>

#include <vantorium/error.hpp>

namespace vantorium {

/// What a step that can fail comes to: its value, or the error that says why there is none. A value itself:
/// it may be copied and handed to other threads as its content may.
template <typename Value>
class [[nodiscard]] Result {
 public:
  Result(Value value) : outcome_(std::in_place_index<0>, std::move(value)) {}
  Result(Error error) : outcome_(std::in_place_index<1>, std::move(error)) {}

  explicit operator bool() const { return outcome_.index() == 0; }

  /// Only when there is a value.
  const Value& operator*() const& { return *std::get_if<0>(&outcome_); }
  Value& operator*() & { return *std::get_if<0>(&outcome_); }
  Value&& operator*() && { return std::move(*std::get_if<0>(&outcome_)); }
  const Value* operator->() const { return std::get_if<0>(&outcome_); }
  Value* operator->() { return std::get_if<0>(&outcome_); }

  /// None when there is a value.
  std::optional<Error> error() const {
    const auto* const error = std::get_if<1>(&outcome_);
    return error == nullptr ? std::nullopt : std::optional(*error);
  }

 private:
  std::variant<Value, Error> outcome_;
};

}  // namespace vantorium
