#include "sandbox/service/journal.hpp"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "sandbox/service/answer.hpp"

namespace vantorium::sandbox {

using nlohmann::json;

namespace {

std::string timestamp() {
  const auto now = std::chrono::system_clock::now();
  const auto milliseconds =
      std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
  return fmt::format("{:%FT%T}.{:03}Z", fmt::gmtime(std::chrono::system_clock::to_time_t(now)), milliseconds);
}

}  // namespace

Journal::Journal(const std::filesystem::path& log, Listener listener) : listener_(std::move(listener)) {
  if (log.empty()) return;
  log_.open(log, std::ios::trunc);
  if (!log_)
    throw std::runtime_error(fmt::format("cannot write the log {}: {}", log.string(), std::strerror(errno)));
}

void Journal::addRequest(json request) { add(requests_, "request", std::move(request)); }
void Journal::addEvent(json event) { add(events_, "event", std::move(event)); }

void Journal::add(Entries& entries, const char* type, json entry) {
  entry["type"] = type;
  entry["time"] = timestamp();
  std::shared_ptr<const json> added;
  {
    const std::lock_guard lock(mutex_);
    entry["number"] = ++entries.added;
    added = std::make_shared<const json>(std::move(entry));
    entries.newest.push_back(added);
    if (entries.newest.size() > kept) entries.newest.pop_front();
    if (log_.is_open()) log_ << toText(*added) << std::endl;
  }
  changed_.notify_all();
  if (listener_) listener_(*added);
}

json Journal::requests() const { return copy(requests_); }
json Journal::events() const { return copy(events_); }

json Journal::copy(const Entries& entries) const {
  std::deque<std::shared_ptr<const json>> newest;
  {
    const std::lock_guard lock(mutex_);
    newest = entries.newest;
  }
  json list = json::array();
  for (const auto& entry : newest) list.push_back(*entry);
  return list;
}

std::optional<json> Journal::waitForRequest(const Predicate& predicate,
                                            std::chrono::milliseconds timeout) const {
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  uint64_t seen = 0;
  std::unique_lock lock(mutex_);
  for (;;) {
    const size_t fresh = std::min<uint64_t>(requests_.added - seen, requests_.newest.size());
    const std::vector<std::shared_ptr<const json>> unseen(
        requests_.newest.end() - static_cast<ptrdiff_t>(fresh), requests_.newest.end());
    seen = requests_.added;
    lock.unlock();
    for (const auto& request : unseen) {
      if (predicate(*request)) return *request;
    }
    lock.lock();
    const auto somethingNew = [&] { return closed_ || requests_.added != seen; };
    if (!changed_.wait_until(lock, deadline, somethingNew) || closed_) return std::nullopt;
  }
}

void Journal::clear() {
  const std::lock_guard lock(mutex_);
  requests_.newest.clear();
  events_.newest.clear();
}

void Journal::close() {
  {
    const std::lock_guard lock(mutex_);
    closed_ = true;
  }
  changed_.notify_all();
}

}  // namespace vantorium::sandbox
