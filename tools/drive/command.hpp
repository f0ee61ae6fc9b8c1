#pragma once

#include <array>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "hosts/headless/wording.hpp"
#include "platform/foundation/clock.hpp"
#include "platform/ui/geometry.hpp"

namespace vantorium::drive {

using headless::brief;
using headless::listed;
using headless::wordsOf;

/// A command cannot be played: what was wrong and what was expected, for the script's author, on one line.
struct Refusal : std::runtime_error {
  explicit Refusal(const std::string& text);
};

/// What an `await` waited for did not come in time.
struct AwaitFailure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// One line of a script. The getters throw `Refusal` when a field has another type than the one asked for;
/// those without "IfAny" also when it is missing.
class Command {
 public:
  using Json = nlohmann::json;

  /// Reads the line, of any bytes; throws `Refusal` when it is no command.
  static Command parse(const std::string& line);

  const std::string& name() const { return name_; }
  /// Echoed in whatever answers the command; null when it has none.
  const Json& tag() const { return tag_; }
  bool has(const std::string& field) const { return fields_.contains(field); }
  /// Refuses a command that has none of these fields.
  void needOneOf(const std::vector<std::string>& fields) const;
  /// The field as it stands; null for none.
  const Json* find(const std::string& field) const;
  const Json& object(const std::string& field) const;

  std::string text(const std::string& field) const;
  std::optional<std::string> textIfAny(const std::string& field) const;
  bool flag(const std::string& field) const;
  std::optional<bool> flagIfAny(const std::string& field) const;
  double number(const std::string& field, double least, double most) const;
  std::optional<double> numberIfAny(const std::string& field, double least, double most) const;
  std::vector<std::string> texts(const std::string& field) const;
  /// [width, height] in points, each above zero.
  std::optional<ui::Size> sizeIfAny(const std::string& field) const;
  /// [x, y, width, height] in points.
  std::optional<ui::Rect> rectIfAny(const std::string& field) const;
  /// An object of texts; none when it is missing or null.
  std::optional<std::map<std::string, std::string>> textMapIfAny(const std::string& field) const;
  Date date(const std::string& field) const;

  /// What the field's word stands for.
  template <typename Meaning>
  Meaning choice(const std::string& field, const std::map<std::string, Meaning>& meanings) const {
    return chosen(field, text(field), meanings);
  }
  template <typename Meaning>
  std::optional<Meaning> choiceIfAny(const std::string& field,
                                     const std::map<std::string, Meaning>& meanings) const {
    return has(field) ? std::optional(choice(field, meanings)) : std::nullopt;
  }
  template <typename Meaning>
  Meaning chosen(const std::string& field, const std::string& word,
                 const std::map<std::string, Meaning>& meanings) const {
    const auto found = meanings.find(word);
    if (found != meanings.end()) return found->second;
    refuseWord(field, word, wordsOf(meanings));
  }

  /// The field is not what it should be.
  [[noreturn]] void refuse(const std::string& field, const std::string& expected) const;

 private:
  [[noreturn]] void refuseWord(const std::string& field, const std::string& word,
                               const std::vector<std::string>& words) const;
  std::vector<double> numbers(const std::string& field, std::size_t count, double least,
                              const std::string& expected) const;

  Json fields_;
  std::string name_;
  Json tag_;
};

}  // namespace vantorium::drive
