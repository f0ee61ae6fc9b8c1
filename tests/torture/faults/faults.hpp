#pragma once

#include <array>
#include <atomic>
#include <cstdint>

/// System calls and allocations that fail to order. This is a library of its own, linked ahead of the C
/// library, whose functions it stands in for; while nothing is armed it hands every call on.
namespace vantorium::torture {

/// What can fail; each a bit.
enum Operation : std::uint32_t {
  makeFile = 1U << 0U,    ///< one that was not there, which takes an inode and a descriptor
  makeFolder = 1U << 1U,  ///< likewise, or a link; takes an inode
  open = 1U << 2U,        ///< a file or folder that is there, which takes a descriptor
  write = 1U << 3U,       ///< bytes of a file
  move = 1U << 4U,        ///< a file or folder to another name
  change = 1U << 5U,      ///< its permissions, or that it is there
  lock = 1U << 6U,        ///< of a file
  read = 1U << 7U,        ///< bytes of a file, entries of a folder
  look = 1U << 8U,        ///< facts of a file
  map = 1U << 9U,         ///< a file into memory
  newSocket = 1U << 10U,  ///< or a pair or event to wake by
  connect = 1U << 11U,    ///< to a service
  send = 1U << 12U,       ///< to a service
  receive = 1U << 13U,    ///< from a service
  wake = 1U << 14U,       ///< through a pair or event
  poll = 1U << 15U,       ///< waiting for any of them
  allocate = 1U << 16U,   ///< memory
};

/// One way of failing.
struct Fault {
  const char* kind;  ///< "file", "socket" or "memory"
  const char* name;  ///< of the error, such as "ENOSPC"; with "+" if it stays
  int error;         ///< `errno`; 0: nothing fails, but fewer bytes are written, sent or received than given
  std::uint32_t operations;  ///< those it strikes and counts
  bool stays;                ///< strikes all later operations, too
};

/// What is ordered and what came of it. Made in shared memory, it outlives the process that it strikes.
struct Order {
  Fault fault{};
  std::uint64_t number = 0;      ///< which operation fails, from 1; 0: none, they are only counted
  std::array<char, 256> home{};  ///< files of this folder and below it count
  std::atomic<std::uint64_t> count{0};
  std::array<std::atomic<std::uint64_t>, 32> counts{};  ///< of each operation, by its bit
  std::atomic<bool> isReached{false};
  std::array<char, 32> operation{};  ///< the function that failed
  std::array<void*, 48> frames{};    ///< and who had called it, innermost first
  int depth = 0;

  /// How many operations of the given kinds there were.
  std::uint64_t countOf(std::uint32_t operations) const {
    std::uint64_t sum = 0;
    for (std::size_t bit = 0; bit < counts.size(); ++bit)
      sum += (operations >> bit & 1U) != 0 ? counts[bit].load() : 0;
    return sum;
  }
};

/// Tells whose files count, before the first is opened. The order outlives the process.
void prepare(Order& order);
/// From here to `disarm`, on every thread that is not exempt.
void arm();
void disarm();

/// While it lives, nothing that its thread does counts or fails: what is the test's own and not the SDK's.
class Exempt {
 public:
  Exempt();
  ~Exempt();
  Exempt(const Exempt&) = delete;
  Exempt& operator=(const Exempt&) = delete;
};
/// Within an exempt thread: from here on the SDK is at work again.
class NotExempt {
 public:
  NotExempt();
  ~NotExempt();
  NotExempt(const NotExempt&) = delete;
  NotExempt& operator=(const NotExempt&) = delete;

 private:
  int before_;
};

// For the functions that stand in; see interpose_*.cpp.

/// Whether this operation is to fail; `errno` is set then.
bool strikes(Operation operation, const char* function);
/// Whether this one is to do less than it was asked to.
bool shortens(Operation operation, const char* function);
bool isBelowHome(const char* path);
bool isBelowHome(int folder, const char* path);

/// What a descriptor stands for, as far as that matters.
enum class Target : std::uint8_t { other, file, service, waker };
Target targetOf(int descriptor);
/// Notes what a new descriptor stands for, and gives it back.
int note(int descriptor, Target target);

}  // namespace vantorium::torture
