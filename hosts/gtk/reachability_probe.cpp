#include "hosts/gtk/reachability_probe.hpp"

#include <linux/rtnetlink.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>
#include <cstring>
#include <fstream>

#include "platform/foundation/file_descriptor.hpp"

namespace vantorium::gtk {

namespace {

struct DefaultRoute {
  unsigned link = 0;  ///< index of its network interface
  std::uint32_t metric = 0;
};

bool requestRoutes(int socket) {
  struct {
    nlmsghdr header;
    rtmsg route;
  } request{};
  request.header.nlmsg_len = NLMSG_LENGTH(sizeof(rtmsg));
  request.header.nlmsg_type = RTM_GETROUTE;
  request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
  request.route.rtm_family = AF_UNSPEC;
  return ::send(socket, &request, request.header.nlmsg_len, 0) ==
         static_cast<ssize_t>(request.header.nlmsg_len);
}

std::optional<DefaultRoute> asDefaultRoute(const nlmsghdr& message) {
  const auto* const route = static_cast<const rtmsg*>(NLMSG_DATA(&message));
  const bool leadsEverywhere = route->rtm_dst_len == 0 && route->rtm_type == RTN_UNICAST;
  if (message.nlmsg_type != RTM_NEWROUTE || !leadsEverywhere || route->rtm_table != RT_TABLE_MAIN)
    return std::nullopt;
  DefaultRoute found;
  int length = static_cast<int>(RTM_PAYLOAD(&message));
  for (const rtattr* each = RTM_RTA(route); RTA_OK(each, length); each = RTA_NEXT(each, length)) {
    if (each->rta_type == RTA_OIF) std::memcpy(&found.link, RTA_DATA(each), sizeof found.link);
    if (each->rta_type == RTA_MULTIPATH)
      found.link = static_cast<const rtnexthop*>(RTA_DATA(each))->rtnh_ifindex;
    if (each->rta_type == RTA_PRIORITY) std::memcpy(&found.metric, RTA_DATA(each), sizeof found.metric);
  }
  return found.link != 0 ? std::optional(found) : std::nullopt;
}

bool isUp(int socket, const char* name) {
  ifreq request{};
  std::memcpy(request.ifr_name, name, std::min<std::size_t>(std::strlen(name), IFNAMSIZ - 1));
  constexpr short up = IFF_UP | IFF_RUNNING;
  return ::ioctl(socket, SIOCGIFFLAGS, &request) == 0 && (request.ifr_flags & up) == up;
}

bool isCellular(const std::string& name) {
  std::ifstream description("/sys/class/net/" + name + "/uevent");
  for (std::string line; std::getline(description, line);) {
    if (line == "DEVTYPE=wwan") return true;
  }
  return name.rfind("wwan", 0) == 0 || name.rfind("rmnet", 0) == 0;
}

// Reads one answer; true while more are to come.
template <typename Handler>
bool readRoutes(int socket, Handler handle) {
  alignas(nlmsghdr) std::array<char, 32768> buffer;
  const ssize_t size = ::recv(socket, buffer.data(), buffer.size(), 0);
  if (size <= 0) return false;
  auto left = static_cast<unsigned>(size);
  for (auto* message = reinterpret_cast<nlmsghdr*>(buffer.data()); NLMSG_OK(message, left);
       message = NLMSG_NEXT(message, left)) {
    if (message->nlmsg_type == NLMSG_DONE || message->nlmsg_type == NLMSG_ERROR) return false;
    if (const auto route = asDefaultRoute(*message)) handle(*route);
  }
  return true;
}

}  // namespace

void RouteProbe::setChangeHandler(std::function<void()> handler) {
  std::unique_ptr<RouteWatch> old;  // goes without the lock
  {
    const MutexLock lock(mutex_);
    handler_ = std::move(handler);
    old.swap(watch_);
  }
  watch();
}

void RouteProbe::watch() {
  const MutexLock lock(mutex_);
  if (watch_ || !handler_) return;
  FileDescriptor news = RouteWatch::openNews();
  if (news.isOpen()) watch_ = std::make_unique<RouteWatch>(std::move(news), handler_);
}

std::optional<std::uint32_t> RouteProbe::flags() {
  watch();
  const FileDescriptor routes(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE));
  const FileDescriptor links(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  if (!routes.isOpen() || !links.isOpen() || !requestRoutes(routes.get())) return std::nullopt;
  // The kernel answers at once, unless something between filters its answers.
  const timeval patience{0, 100'000};
  ::setsockopt(routes.get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
  std::string best;
  std::uint32_t bestMetric = UINT_MAX;
  const auto consider = [&](const DefaultRoute& route) {
    std::array<char, IF_NAMESIZE> name{};
    if (::if_indextoname(route.link, name.data()) == nullptr || !isUp(links.get(), name.data())) return;
    if (!best.empty() && route.metric >= bestMetric) return;
    best = name.data();
    bestMetric = route.metric;
  };
  while (readRoutes(routes.get(), consider)) {
  }
  if (best.empty()) return loopbackIsEnough_ ? reachability_flags::reachable : 0;
  return reachability_flags::reachable | (isCellular(best) ? reachability_flags::isWWAN : 0);
}

}  // namespace vantorium::gtk
