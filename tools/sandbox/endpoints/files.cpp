// Everything outside /api/: the catalogue's files, and those that are made of their path.
#include <fmt/format.h>

#include "sandbox/endpoints/endpoint.hpp"
#include "sandbox/service/made_file.hpp"

namespace vantorium::sandbox {
namespace {

Answer file(const Service& service, const Call& call) {
  if (auto made = madeFile(call.path)) return *made;
  if (auto found = service.catalogue.file(call.path)) return *found;
  return {.status = 404,
          .contentType = "text/html; charset=utf-8",
          .body = {"<!doctype html><title>Not found</title><h1>Not found</h1>\n"}};
}

}  // namespace

Endpoint fileEndpoint() {
  return {"/", {"GET", false, false, false}, nullptr, &file, errorEnvelope("There is no such file.")};
}

}  // namespace vantorium::sandbox
