#include "bindings/c/handles.hpp"

#include <fmt/format.h>

#include <vector>

#include "platform/foundation/files.hpp"

namespace vantorium::c {

namespace {

/// With its article, if it takes one.
const char* nameOf(Kind kind) {
  switch (kind) {
    case Kind::error:
      return "an error";
    case Kind::queue:
      return "a queue";
    case Kind::work:
      return "work";
    case Kind::host:
      return "a host";
    case Kind::delegate:
      return "a delegate";
    case Kind::parameters:
      return "parameters";
    case Kind::nativeAdOptions:
      return "native ad options";
    case Kind::mediaViewOptions:
      return "media view options";
    case Kind::serverParameter:
      return "a server parameter";
    case Kind::nativeAd:
      return "a native ad";
    case Kind::nativeAdAsset:
      return "a native ad asset";
    case Kind::nativeAdView:
      return "a native ad view";
  }
  return "an object";
}

HandleTable::Found checked(HandleTable::Found found, const void* handle, HandleTable::Kinds kinds,
                           const char* argument) {
  using Outcome = HandleTable::Outcome;
  const char* const wanted = nameOf(*kinds.begin());
  if (handle == nullptr) refuse(fmt::format("\"{}\" is null. Give a handle of {}.", argument, wanted));
  switch (found.outcome) {
    case Outcome::found:
      return found;
    case Outcome::noHandle:
      refuse(fmt::format("\"{}\" is no handle, or one that was given up. Give a handle of {}.", argument,
                         wanted));
    case Outcome::otherKind:
      refuse(fmt::format("\"{}\" is a handle of {}. Give one of {}.", argument, nameOf(found.kind), wanted));
    case Outcome::otherThread:
      break;
  }
  refuse(fmt::format("\"{}\" is of use on one thread only, the main thread for most. Call this there.",
                     argument));
}

}  // namespace

void refuse(const std::string& text) { throw Refusal{VantoriumError::internalError(text)}; }

HandleTable::Found found(const void* handle, HandleTable::Kinds kinds, const char* argument) {
  return checked(HandleTable::shared().find(handle, kinds), handle, kinds, argument);
}

HandleTable::Found taken(const void* handle, HandleTable::Kinds kinds, const char* argument) {
  return checked(HandleTable::shared().take(handle, kinds), handle, kinds, argument);
}

vantorium_host* giveHost(std::shared_ptr<Host> host) {
  static auto* const mutex = new Mutex;
  static auto* const hosts = new std::vector<std::shared_ptr<Host>>;
  {
    const MutexLock lock(*mutex);
    hosts->push_back(host);
  }
  return giveToThisThread<vantorium_host>(std::move(host));
}

std::string text(const char* given, const char* argument) {
  if (given == nullptr) refuse(fmt::format("\"{}\" is null. Give a text.", argument));
  if (!isUTF8(given)) refuse(fmt::format("\"{}\" is not UTF-8. Give a text in UTF-8.", argument));
  return given;
}

std::optional<std::string> textIfAny(const char* given, const char* argument) {
  if (given == nullptr) return std::nullopt;
  return text(given, argument);
}

}  // namespace vantorium::c
