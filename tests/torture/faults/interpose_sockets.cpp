// The functions of sockets, and those that are of files and sockets alike.
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>

#include "torture/faults/faults.hpp"
#include "torture/faults/following.hpp"

namespace torture = vantorium::torture;
using torture::note;
using torture::Operation;
using torture::shortens;
using torture::strikes;
using torture::Target;
using torture::targetOf;

namespace {

/// What writing to the descriptor is; none if that does not matter.
Operation writingTo(int descriptor) {
  switch (targetOf(descriptor)) {
    case Target::file:
      return torture::write;
    case Target::service:
      return torture::send;
    case Target::waker:
      return torture::wake;
    case Target::other:
      return Operation{};
  }
  return Operation{};
}

Operation readingFrom(int descriptor) {
  switch (targetOf(descriptor)) {
    case Target::file:
      return torture::read;
    case Target::service:
      return torture::receive;
    case Target::waker:
    case Target::other:
      return Operation{};
  }
  return Operation{};
}

/// How many of so many bytes are to be handled: a half, when it is this one's turn.
size_t allowed(Operation operation, size_t size, const char* function) {
  return operation != 0 && size > 1 && shortens(operation, function) ? size / 2 : size;
}

bool fails(Operation operation, const char* function) {
  return operation != 0 && strikes(operation, function);
}

}  // namespace

extern "C" {

int close(int descriptor) {
  FOLLOWING(close);
  note(descriptor, Target::other);
  return following(descriptor);
}

ssize_t write(int descriptor, const void* bytes, size_t size) {
  FOLLOWING(write);
  const Operation operation = writingTo(descriptor);
  if (fails(operation, "write")) return -1;
  return following(descriptor, bytes, allowed(operation, size, "write"));
}

ssize_t writev(int descriptor, const iovec* parts, int count) {
  FOLLOWING(writev);
  if (fails(writingTo(descriptor), "writev")) return -1;
  return following(descriptor, parts, count);
}

ssize_t read(int descriptor, void* bytes, size_t size) {
  FOLLOWING(read);
  const Operation operation = readingFrom(descriptor);
  if (fails(operation, "read")) return -1;
  return following(descriptor, bytes, allowed(operation, size, "read"));
}

int socket(int domain, int type, int protocol) noexcept {
  FOLLOWING(socket);
  const bool isForService = domain == AF_INET || domain == AF_INET6;
  if (isForService && strikes(torture::newSocket, "socket")) return -1;
  return note(following(domain, type, protocol), isForService ? Target::service : Target::other);
}

int socketpair(int domain, int type, int protocol, int* pair) noexcept {
  FOLLOWING(socketpair);
  if (strikes(torture::newSocket, "socketpair")) return -1;
  const int result = following(domain, type, protocol, pair);
  if (result == 0) note(pair[0], Target::waker), note(pair[1], Target::waker);
  return result;
}

int eventfd(unsigned count, int flags) noexcept {
  FOLLOWING(eventfd);
  if (strikes(torture::newSocket, "eventfd")) return -1;
  return note(following(count, flags), Target::waker);
}

int connect(int descriptor, const sockaddr* address, socklen_t size) {
  FOLLOWING(connect);
  if (targetOf(descriptor) == Target::service && strikes(torture::connect, "connect")) return -1;
  return following(descriptor, address, size);
}

ssize_t send(int descriptor, const void* bytes, size_t size, int flags) {
  FOLLOWING(send);
  const Operation operation = writingTo(descriptor);
  if (fails(operation, "send")) return -1;
  return following(descriptor, bytes, allowed(operation, size, "send"), flags);
}

ssize_t sendto(int descriptor, const void* bytes, size_t size, int flags, const sockaddr* to,
               socklen_t length) {
  FOLLOWING(sendto);
  const Operation operation = writingTo(descriptor);
  if (fails(operation, "sendto")) return -1;
  return following(descriptor, bytes, allowed(operation, size, "sendto"), flags, to, length);
}

ssize_t sendmsg(int descriptor, const msghdr* message, int flags) {
  FOLLOWING(sendmsg);
  if (fails(writingTo(descriptor), "sendmsg")) return -1;
  return following(descriptor, message, flags);
}

ssize_t recv(int descriptor, void* bytes, size_t size, int flags) {
  FOLLOWING(recv);
  const Operation operation = readingFrom(descriptor);
  if (fails(operation, "recv")) return -1;
  return following(descriptor, bytes, allowed(operation, size, "recv"), flags);
}

int poll(pollfd* descriptors, nfds_t count, int timeout) {
  FOLLOWING(poll);
  if (strikes(torture::poll, "poll")) return -1;
  return following(descriptors, count, timeout);
}

}  // extern "C"
