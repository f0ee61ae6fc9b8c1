#include "drive/output.hpp"

#include <algorithm>
#include <map>
#include <sstream>
#include <string>
#include <utility>

namespace vantorium::drive {

using nlohmann::json;

namespace {

bool contains(const json& value, const json& wanted) {
  if (!wanted.is_object()) return value == wanted;
  if (!value.is_object()) return false;
  for (const auto& [name, field] : wanted.items()) {
    const auto found = value.find(name);
    if (found == value.end() || !contains(*found, field)) return false;
  }
  return true;
}

std::string text(const json& event) { return event.dump(-1, ' ', false, json::error_handler_t::replace); }

/// The diagnostic log is written by several threads: its lines are put in an order of their own.
void sortLog(json& event) {
  if (event.value("of", json()) != "getLog" || !event["value"].is_string()) return;
  std::istringstream stream(event["value"].get<std::string>());
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line + "\n");
  std::sort(lines.begin(), lines.end());
  std::string sorted;
  for (const auto& line : lines) sorted += line;
  event["value"] = sorted;
}

}  // namespace

Output::Output(std::FILE* file, std::unique_ptr<Placeholders> placeholders)
    : file_(file), placeholders_(std::move(placeholders)) {}

void Output::print(const json& event) {
  const MutexLock lock(mutex_);
  if (isClosed_) return;
  const bool isFromElsewhere = std::this_thread::get_id() != mainThread_;
  if (placeholders_ && isFromElsewhere && event.value("event", json()) == "console") {
    held_.push_back(event);
    return;
  }
  write(lineOf(event));
}

std::size_t Output::heldSoFar() const {
  const MutexLock lock(mutex_);
  return released_ + held_.size();
}

void Output::release(std::size_t count) {
  const MutexLock lock(mutex_);
  if (!isClosed_ && count > released_) writeHeld(count - released_);
}

Output::Line Output::lineOf(const json& event) {
  if (!placeholders_) return {event, nullptr};
  json printed = placeholders_->replace(event);
  sortLog(printed);
  return {event, std::move(printed)};
}

void Output::writeHeld(std::size_t count) {
  // Sorted as they will be printed; none of these texts has an identifier, whose number depends on the order.
  std::multimap<std::string, json> sorted;
  for (std::size_t index = 0; index < count; ++index)
    sorted.emplace(text(placeholders_->replace(held_[index])), held_[index]);
  held_.erase(held_.begin(), held_.begin() + static_cast<std::ptrdiff_t>(count));
  released_ += count;
  for (const auto& [key, event] : sorted) write(lineOf(event));
}

void Output::write(Line line) {
  const std::string bytes = text(line.printed.is_null() ? line.event : line.printed) + "\n";
  const bool isWritten =
      std::fwrite(bytes.data(), 1, bytes.size(), file_) == bytes.size() && std::fflush(file_) == 0;
  hasFailed_ = hasFailed_ || !isWritten;
  lines_.push_back(std::move(line));
}

bool Output::Line::has(const json& fields) const {
  return (!event.is_null() && contains(event, fields)) || (!printed.is_null() && contains(printed, fields));
}

bool Output::claim(const json& fields, std::size_t& from) {
  const MutexLock lock(mutex_);
  const auto isWanted = [&](const json& event) { return lineOf(event).has(fields); };
  const auto held = std::find_if(held_.begin(), held_.end(), isWanted);
  if (held != held_.end()) writeHeld(static_cast<std::size_t>(held - held_.begin()) + 1);
  for (; from < lines_.size(); ++from) {
    if (!lines_[from].has(fields)) continue;
    lines_[from] = {};
    return true;
  }
  return false;
}

json Output::nearest(const json& fields) const {
  const auto flaws = [&](const Line& line) {
    std::size_t count = 0;
    for (const auto& [name, value] : fields.items()) count += line.has({{name, value}}) ? 0 : 1;
    return count;
  };
  const MutexLock lock(mutex_);
  for (auto line = lines_.rbegin(); fields.size() > 1 && line != lines_.rend(); ++line) {
    if (flaws(*line) == 1) return line->printed.is_null() ? line->event : line->printed;
  }
  return nullptr;
}

void Output::close() {
  const MutexLock lock(mutex_);
  isClosed_ = true;
}

bool Output::hasFailed() const {
  const MutexLock lock(mutex_);
  return hasFailed_;
}

}  // namespace vantorium::drive
