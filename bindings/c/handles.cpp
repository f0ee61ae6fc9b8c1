#include "bindings/c/handles.hpp"

#include <fmt/format.h>

#include "platform/foundation/files.hpp"

namespace vantorium::c {

namespace {

const char* nameOf(Kind kind) {
  switch (kind) {
    case Kind::error:
      return "error";
    case Kind::queue:
      return "queue";
    case Kind::work:
      return "work";
    case Kind::host:
      return "host";
    case Kind::delegate:
      return "delegate";
    case Kind::parameters:
      return "parameters";
    case Kind::nativeAdOptions:
      return "native ad options";
    case Kind::mediaViewOptions:
      return "media view options";
    case Kind::serverParameter:
      return "server parameter";
    case Kind::nativeAd:
      return "native ad";
    case Kind::nativeAdAsset:
      return "native ad asset";
    case Kind::nativeAdView:
      return "native ad view";
  }
  return "object";
}

}  // namespace

void refuse(const std::string& text) { throw Refusal{VantoriumError::internalError(text)}; }

HandleTable::Entry entryOf(const void* handle, Kind kind, const char* argument) {
  if (handle == nullptr)
    refuse(fmt::format("\"{}\" is null. Give a handle of a {}.", argument, nameOf(kind)));
  auto entry = HandleTable::shared().find(handle);
  if (!entry) {
    refuse(fmt::format("\"{}\" is no handle, or one that was given up. Give a handle of a {}.", argument,
                       nameOf(kind)));
  }
  if (entry->kind != kind) {
    refuse(fmt::format("\"{}\" is a handle of a {}. Give one of a {}.", argument, nameOf(entry->kind),
                       nameOf(kind)));
  }
  if (entry->user && *entry->user != std::this_thread::get_id()) {
    refuse(fmt::format("\"{}\" is of use on one thread only, the main thread for most. Call this there.",
                       argument));
  }
  return *std::move(entry);
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
