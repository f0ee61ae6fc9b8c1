#include "hosts/gtk/route_watch.hpp"

#include <glib-unix.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <utility>

#include "platform/foundation/run_or_drop.hpp"

namespace vantorium::gtk {

namespace {

struct Watched {
  FileDescriptor news;
  std::function<void()> changed;
};

/// Empties the socket, for of many changes in a row only the outcome counts. False when nothing will come any
/// more.
bool readAll(int news) {
  std::array<char, 4096> message;  // its text does not matter: what is longer is cut off
  while (true) {
    const ssize_t size = ::recv(news, message.data(), message.size(), MSG_DONTWAIT);
    if (size == 0) return false;
    if (size > 0 || errno == EINTR || errno == ENOBUFS) continue;  // the last: more came than it could hold
    return errno == EAGAIN;
  }
}

gboolean tell(gint /*descriptor*/, GIOCondition /*condition*/, gpointer data) {
  const Watched& watched = *static_cast<Watched*>(data);
  const bool goesOn = readAll(watched.news.get());
  runOrDrop(watched.changed);
  return goesOn ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
}

}  // namespace

FileDescriptor RouteWatch::openNews() {
  FileDescriptor news(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE));
  sockaddr_nl address{};
  address.nl_family = AF_NETLINK;
  address.nl_groups = RTMGRP_LINK | RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_ROUTE;
  const bool isBound =
      news.isOpen() && ::bind(news.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
  return isBound ? std::move(news) : FileDescriptor(-1);
}

RouteWatch::RouteWatch(FileDescriptor news, std::function<void()> changed) {
  if (!news.isOpen()) return;
  source_ = g_unix_fd_source_new(news.get(), G_IO_IN);
  // The main context keeps a source's data alive while it is dispatched: the watch may go in its own handler.
  g_source_set_callback(source_, G_SOURCE_FUNC(tell), new Watched{std::move(news), std::move(changed)},
                        [](gpointer data) { delete static_cast<Watched*>(data); });
  g_source_set_name(source_, "vantorium routes");
  g_source_attach(source_, nullptr);
}

RouteWatch::~RouteWatch() {
  if (source_ == nullptr) return;
  g_source_destroy(source_);
  g_source_unref(source_);
}

}  // namespace vantorium::gtk
