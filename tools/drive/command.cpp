#include "drive/command.hpp"

#include <fmt/format.h>

#include "drive/dates.hpp"
#include "model/json.hpp"

namespace vantorium::drive {

namespace {

constexpr double largestLength = 100'000;  // points

/// Control characters come from the script's texts; an exception's own text would end at the first NUL.
std::string onOneLine(const std::string& text) {
  std::string line;
  for (const char each : text) {
    const auto byte = static_cast<unsigned char>(each);
    if (byte < 0x20 || byte == 0x7f) {
      line += fmt::format("\\u{:04x}", byte);
    } else {
      line += each;
    }
  }
  return line;
}

}  // namespace

Refusal::Refusal(const std::string& text) : std::runtime_error(onOneLine(text)) {}

Command Command::parse(const std::string& line) {
  std::optional<Error> error;
  auto fields = parseJSON(line, error);
  if (!fields) {
    const std::string& problem = error->localizedDescription();
    throw Refusal(problem + (problem.ends_with('.') ? "" : ".") + " Expected one JSON object per line.");
  }
  if (!fields->is_object()) {
    throw Refusal(fmt::format("{} is no command. Expected a JSON object with \"do\".", brief(*fields)));
  }
  Command command;
  command.fields_ = std::move(*fields);
  if (const Json* const tag = command.find("tag")) command.tag_ = *tag;
  command.name_ = "The command";
  command.name_ = command.text("do");
  return command;
}

const Command::Json* Command::find(const std::string& field) const {
  const auto found = fields_.find(field);
  return found == fields_.end() ? nullptr : &*found;
}

void Command::refuse(const std::string& field, const std::string& expected) const {
  const Json* const value = find(field);
  const std::string what = value != nullptr ? fmt::format("\"{}\" cannot be {}", field, brief(*value))
                                            : fmt::format("\"{}\" is missing", field);
  throw Refusal(fmt::format("{}: {}. Expected {}.", name_, what, expected));
}

void Command::refuseWord(const std::string& field, const std::string& word,
                         const std::vector<std::string>& words) const {
  throw Refusal(
      fmt::format("{}: \"{}\" cannot be {}. Expected one of {}.", name_, field, brief(word), listed(words)));
}

void Command::needOneOf(const std::vector<std::string>& fields) const {
  for (const auto& field : fields) {
    if (has(field)) return;
  }
  throw Refusal(fmt::format("{}: says nothing to do. Expected one of the fields {}.", name_, listed(fields)));
}

const Command::Json& Command::object(const std::string& field) const {
  const Json* const value = find(field);
  if (value == nullptr || !value->is_object()) refuse(field, "an object");
  return *value;
}

std::string Command::text(const std::string& field) const {
  const Json* const value = find(field);
  if (value == nullptr || !value->is_string()) refuse(field, "a text");
  return value->get<std::string>();
}

std::optional<std::string> Command::textIfAny(const std::string& field) const {
  return has(field) ? std::optional(text(field)) : std::nullopt;
}

bool Command::flag(const std::string& field) const {
  const Json* const value = find(field);
  if (value == nullptr || !value->is_boolean()) refuse(field, "true or false");
  return value->get<bool>();
}

std::optional<bool> Command::flagIfAny(const std::string& field) const {
  return has(field) ? std::optional(flag(field)) : std::nullopt;
}

double Command::number(const std::string& field, double least, double most) const {
  const Json* const value = find(field);
  const bool fits =
      value != nullptr && value->is_number() && value->get<double>() >= least && value->get<double>() <= most;
  if (!fits) refuse(field, fmt::format("a number from {:.15g} to {:.15g}", least, most));
  return value->get<double>();
}

std::optional<double> Command::numberIfAny(const std::string& field, double least, double most) const {
  return has(field) ? std::optional(number(field, least, most)) : std::nullopt;
}

std::vector<std::string> Command::texts(const std::string& field) const {
  const Json* const value = find(field);
  if (value == nullptr || !value->is_array()) refuse(field, "a list of texts");
  std::vector<std::string> all;
  for (const auto& each : *value) {
    if (!each.is_string()) refuse(field, "a list of texts");
    all.push_back(each.get<std::string>());
  }
  return all;
}

std::vector<double> Command::numbers(const std::string& field, std::size_t count, double least,
                                     const std::string& expected) const {
  const Json& value = *find(field);
  if (!value.is_array() || value.size() != count) refuse(field, expected);
  std::vector<double> all;
  for (const auto& each : value) {
    const bool fits = each.is_number() && each.get<double>() >= least && each.get<double>() <= largestLength;
    if (!fits) refuse(field, expected);
    all.push_back(each.get<double>());
  }
  return all;
}

std::optional<ui::Size> Command::sizeIfAny(const std::string& field) const {
  if (!has(field)) return std::nullopt;
  const auto all = numbers(field, 2, 1, "[width, height], each from 1 to 100000 points");
  return ui::Size{all[0], all[1]};
}

std::optional<ui::Rect> Command::rectIfAny(const std::string& field) const {
  if (!has(field)) return std::nullopt;
  const std::string expected = "[x, y, width, height] in points, at most 100000, no width or height below 0";
  const auto all = numbers(field, 4, -largestLength, expected);
  if (all[2] < 0 || all[3] < 0) refuse(field, expected);
  return ui::Rect{all[0], all[1], all[2], all[3]};
}

std::optional<std::map<std::string, std::string>> Command::textMapIfAny(const std::string& field) const {
  const Json* const value = find(field);
  if (value == nullptr || value->is_null()) return std::nullopt;
  if (!value->is_object()) refuse(field, "an object of texts");
  std::map<std::string, std::string> all;
  for (const auto& [key, each] : value->items()) {
    if (!each.is_string()) refuse(field, "an object of texts");
    all[key] = each.get<std::string>();
  }
  return all;
}

Date Command::date(const std::string& field) const {
  const auto date = parseDate(text(field));
  if (!date) refuse(field, "a date like 2026-01-31 or 2026-01-31T12:00:00Z, from 1970 to 2199");
  return *date;
}

}  // namespace vantorium::drive
