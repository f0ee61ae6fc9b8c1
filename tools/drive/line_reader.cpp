#include "drive/line_reader.hpp"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <utility>

#include "platform/foundation/signal_block.hpp"

namespace vantorium::drive {

namespace {

constexpr std::size_t mostLinesAhead = 1000;  // what is not yet played stays in the pipe

}  // namespace

LineReader::LineReader(int input, std::function<void()> didRead)
    : input_(input), didRead_(std::move(didRead)), stop_(eventfd(0, EFD_CLOEXEC)) {
  const SignalBlock block;
  thread_ = std::thread([this] { read(); });
}

LineReader::~LineReader() {
  {
    const std::lock_guard lock(mutex_);
    isStopped_ = true;
  }
  changed_.notify_all();
  const std::uint64_t one = 1;
  static_cast<void>(!::write(stop_.get(), &one, sizeof one));
  thread_.join();
}

bool LineReader::isReady() const {
  const std::lock_guard lock(mutex_);
  return hasEnded_ || !lines_.empty();
}

std::optional<LineReader::Line> LineReader::take() {
  std::optional<Line> line;
  {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return hasEnded_ || !lines_.empty(); });
    if (lines_.empty()) return std::nullopt;
    line = std::move(lines_.front());
    lines_.pop_front();
  }
  changed_.notify_all();
  return line;
}

void LineReader::read() {
  std::array<char, 65536> buffer{};
  while (waitForInput()) {
    const ssize_t count = ::read(input_, buffer.data(), buffer.size());
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) continue;
    if (count <= 0) break;
    if (!digest(buffer.data(), static_cast<std::size_t>(count))) break;
  }
  finish();
}

bool LineReader::waitForInput() const {
  std::array<pollfd, 2> descriptors{{{input_, POLLIN, 0}, {stop_.get(), POLLIN, 0}}};
  while (::poll(descriptors.data(), descriptors.size(), -1) < 0) {
    if (errno != EINTR) return false;
  }
  return descriptors[1].revents == 0;
}

bool LineReader::digest(const char* bytes, std::size_t count) {
  while (count > 0) {
    const auto* const end = static_cast<const char*>(std::memchr(bytes, '\n', count));
    const std::size_t length = end != nullptr ? static_cast<std::size_t>(end - bytes) : count;
    if (partial_.size() + length > longestLine) {
      add(std::exchange(partial_, {}), true);
      return false;
    }
    partial_.append(bytes, length);
    if (end == nullptr) return true;
    if (!add(std::exchange(partial_, {}), false)) return false;
    bytes += length + 1;
    count -= length + 1;
  }
  return true;
}

bool LineReader::add(std::string text, bool isTooLong) {
  {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return isStopped_ || lines_.size() < mostLinesAhead; });
    if (isStopped_) return false;
    lines_.push_back({++count_, std::move(text), isTooLong});
  }
  changed_.notify_all();
  didRead_();
  return true;
}

void LineReader::finish() {
  if (!partial_.empty()) add(std::exchange(partial_, {}), false);
  {
    const std::lock_guard lock(mutex_);
    hasEnded_ = true;
  }
  changed_.notify_all();
  didRead_();
}

}  // namespace vantorium::drive
