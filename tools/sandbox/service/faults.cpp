#include "sandbox/service/faults.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

namespace vantorium::sandbox {

using nlohmann::json;

void FaultTable::set(std::vector<Fault> faults) {
  const std::lock_guard lock(mutex_);
  faults_ = std::move(faults);
}

std::optional<Fault> FaultTable::strike(std::string_view path) {
  const std::lock_guard lock(mutex_);
  for (auto& fault : faults_) {
    if (!path.starts_with(fault.path) || fault.times == 0) continue;
    if (fault.times) --*fault.times;
    return fault;
  }
  return std::nullopt;
}

json FaultTable::list() const {
  const std::lock_guard lock(mutex_);
  json list = json::array();
  for (const auto& fault : faults_) {
    json entry = fault.parameters;
    entry["path"] = fault.path;
    entry["fault"] = fault.name;
    entry["times"] = fault.times ? json(*fault.times) : json(nullptr);
    list.push_back(std::move(entry));
  }
  return list;
}

namespace {

[[noreturn]] void reject(const std::string& what) { throw std::invalid_argument(what); }

std::string quotedList(const json& object) {
  std::string names;
  for (const auto& [name, value] : object.items()) names += (names.empty() ? "" : ", ") + name;
  return names.empty() ? "none" : names;
}

bool sameType(const json& value, const json& example) {
  if (example.is_number()) return value.is_number() && value >= 0;
  if (example.is_null()) return true;
  return value.type() == example.type();
}

void setParameter(Fault& fault, const std::string& name, const json& value) {
  const auto known = fault.parameters.find(name);
  if (known == fault.parameters.end()) {
    reject(fmt::format(R"(the fault "{}" has no parameter "{}"; it has: {})", fault.name, name,
                       quotedList(fault.parameters)));
  }
  if (!sameType(value, *known)) {
    reject(fmt::format(R"(parameter "{}" of the fault "{}" must be a {}, as its default {})", name,
                       fault.name, known->is_number() ? "number that is not negative" : known->type_name(),
                       known->dump()));
  }
  *known = value;
}

Fault parseFault(const json& description) {
  if (!description.is_object())
    reject(R"(a fault is an object such as {"path":"/api/campaigns","fault":"noFill"})");
  const json kinds = knownFaults();
  Fault fault;
  const json name = description.value("fault", json());
  if (!name.is_string() || !kinds.contains(name.get<std::string>())) {
    reject(fmt::format("unknown fault {}; known are: {}", name.dump(), quotedList(kinds)));
  }
  fault.name = name.get<std::string>();
  fault.parameters = kinds[fault.name]["parameters"];
  for (const auto& [key, value] : description.items()) {
    if (key == "fault") continue;
    if (key == "path") {
      if (!value.is_string() || !value.get<std::string>().starts_with('/')) {
        reject(R"("path" must be a string that starts with "/": the beginning of the paths to strike)");
      }
      fault.path = value.get<std::string>();
    } else if (key == "times") {
      if (!value.is_number_integer() || value < 1 || value > 1'000'000)
        reject("\"times\" must be a whole number from 1");
      fault.times = value.get<int>();
    } else {
      setParameter(fault, key, value);
    }
  }
  if (fault.path.empty()) reject("\"path\" is missing: the beginning of the paths to strike");
  return fault;
}

}  // namespace

std::vector<Fault> parseFaults(const json& description) {
  if (!description.is_array()) return {parseFault(description)};
  std::vector<Fault> faults;
  std::transform(description.begin(), description.end(), std::back_inserter(faults), &parseFault);
  return faults;
}

}  // namespace vantorium::sandbox
