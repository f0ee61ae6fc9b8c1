#include "timeline.hpp"

#include <nlohmann/json.hpp>

bool Timeline::open(const std::filesystem::path& file) {
  file_.open(file, std::ios::trunc);
  return file_.is_open();
}

void Timeline::note(std::string_view who, std::string_view what, std::initializer_list<Detail> details) {
  if (!file_.is_open()) return;
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start_;
  const std::chrono::duration<double> sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
  nlohmann::ordered_json line{
      {"seconds", elapsed.count()}, {"time", sinceEpoch.count()}, {"who", who}, {"what", what}};
  for (const auto& [name, value] : details) line[std::string(name)] = value;
  using nlohmann::ordered_json;
  file_ << line.dump(-1, ' ', false, ordered_json::error_handler_t::replace) << std::endl;
}
