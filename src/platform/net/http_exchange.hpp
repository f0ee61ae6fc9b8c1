#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <string>

#include "platform/net/http_session.hpp"
#include "platform/net/http_transfer.hpp"

namespace vantorium {

struct HTTPExchange;

/// An exchange is one element from the time it is sent until its completion has run, and is only ever moved
/// from list to list: on the way nothing has to find memory for it.
using HTTPExchangeList = std::list<HTTPExchange>;

struct HTTPLane;

struct HTTPExchange {
  std::uint64_t id = 0;
  HTTPRequest request = {};
  HTTPSession::Completion completion = nullptr;
  HTTPAnswer answer = {};  ///< once it has ended

  // While it is under way:
  HTTPLane* lane = nullptr;
  HTTPExchangeList::iterator place = {};
  std::unique_ptr<HTTPTransfer> transfer = nullptr;
};

/// The exchanges with one server: those that wait for their turn, and how many are under way.
struct HTTPLane {
  std::size_t active = 0;
  HTTPExchangeList waiting = {};
};

}  // namespace vantorium
