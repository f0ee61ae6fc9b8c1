// Every kind of harm the service can do, one function each.
#include <fmt/format.h>

#include <array>
#include <thread>

#include "sandbox/service/faults.hpp"

namespace vantorium::sandbox {
namespace {

using nlohmann::json;

constexpr size_t block = 64U << 10U;

struct Strike {
  const json& parameters;
  const Victim& victim;

  size_t count(const char* name) const { return parameters.at(name).get<size_t>(); }
  std::string text(const char* name) const { return parameters.at(name).get<std::string>(); }
};

std::chrono::milliseconds milliseconds(const json& seconds) {
  constexpr double week = 7.0 * 24 * 60 * 60;
  return std::chrono::milliseconds(static_cast<int64_t>(std::min(seconds.get<double>(), week) * 1000));
}

std::string head(const std::string& headers) {
  return "HTTP/1.1 200 OK\r\nConnection: close\r\n" + headers + "\r\n";
}

std::string headOf(const Answer& answer) {
  return head(
      fmt::format("Content-Type: {}\r\nContent-Length: {}\r\n", answer.contentType, answer.body.size()));
}

/// Sends the first bytes of a body whose head promised all of them.
void sendPart(Connection& connection, const Answer& answer, size_t bytes) {
  bool alive = connection.writeAll(headOf(answer));
  for (size_t at = 0; alive && at < bytes; at += block) {
    alive = connection.writeAll(answer.body.read(at, std::min(block, bytes - at)));
  }
}

Plan noFill(const Strike& strike) {
  const json& answer = strike.victim.noFill;
  if (!answer.is_string()) return {.answer = jsonAnswer(answer)};
  const auto text = answer.get<std::string>();
  const bool page = text.starts_with("<!doctype html>");
  return {.answer = Answer{.contentType = page ? "text/html; charset=utf-8" : "text/plain", .body = {text}}};
}

Plan serviceError(const Strike& strike) { return {.answer = failure(strike.text("text"))}; }

Plan notJSON(const Strike& strike) {
  return {.answer = Answer{.contentType = "text/html", .body = {strike.text("text")}}};
}

json otherType(const json& value) {
  if (value.is_string()) return 7;
  if (value.is_number()) return "seven";
  if (value.is_boolean()) return "yes";
  if (value.is_array()) return json::object({{"0", "an object"}});
  return json::array({value});
}

json withWrongFields(json value, int depth = 0) {
  if (value.is_array() && depth < 3) {
    for (auto& element : value) element = withWrongFields(std::move(element), depth + 1);
    return value;
  }
  if (!value.is_object()) return otherType(value);
  for (auto& [key, field] : value.items()) {
    if (depth == 0 && key == "status") continue;
    // The lists of records stay, so that the fields inside them are what is wrong.
    const bool records = depth == 0 && field.is_array() && !field.empty() && field.front().is_object();
    field = records ? withWrongFields(std::move(field), depth + 1) : otherType(field);
  }
  return value;
}

Plan wrongTypes(const Strike& strike) {
  if (strike.text("where") != "fields") {
    return {.answer = jsonAnswer({{"status", true}, {"error", 7}, {"data", "none"}, {"token", 7}})};
  }
  const Answer answer = strike.victim.trueAnswer();
  json value = json::parse(answer.body.read(0, answer.body.size()), nullptr, false);
  if (value.is_discarded()) return {.answer = jsonAnswer(7)};
  return {.answer = jsonAnswer(withWrongFields(std::move(value)))};
}

Plan notUTF8(const Strike& strike) {
  Answer answer = strike.victim.trueAnswer();
  const std::string text = answer.body.read(0, answer.body.size());
  answer.body = {text.substr(0, text.size() / 2) + "\xC3\x28" + text.substr(text.size() / 2)};
  return {.answer = std::move(answer)};
}

Plan textReplaced(const Strike& strike) {
  Answer answer = strike.victim.trueAnswer();
  std::string text = answer.body.read(0, answer.body.size());
  const std::string what = strike.text("what");
  const std::string with = strike.text("with");
  for (size_t at = 0; !what.empty() && (at = text.find(what, at)) != std::string::npos; at += with.size()) {
    text.replace(at, what.size(), with);
  }
  answer.body = {std::move(text)};
  return {.answer = std::move(answer)};
}

Plan successWithStatus500(const Strike& strike) {
  Answer answer = strike.victim.trueAnswer();
  answer.status = 500;
  return {.answer = std::move(answer)};
}

Plan delay(const Strike& strike) {
  return {.answer = strike.victim.trueAnswer(), .pause = milliseconds(strike.parameters.at("seconds"))};
}

// How much of a body that is not empty arrives: never all of it.
size_t partOf(const Strike& strike, const Body& body) {
  const json& bytes = strike.parameters.at("bytes");
  return std::min(bytes.is_number() ? bytes.get<size_t>() : body.size() / 2, body.size() - 1);
}

Plan bodyCutShort(const Strike& strike) {
  Answer answer = strike.victim.trueAnswer();
  if (answer.body.size() == 0) answer.body = {std::string(100, ' ')};
  const size_t sent = partOf(strike, answer.body);
  return {.answer = answer,
          .deliver = [answer, sent](Connection& connection) { sendPart(connection, answer, sent); }};
}

Plan bodyTruncated(const Strike& strike) {
  Answer answer = strike.victim.trueAnswer();
  if (answer.body.size() > 0) answer.body = {answer.body.read(0, partOf(strike, answer.body))};
  return {.answer = std::move(answer)};
}

Plan connectionReset(const Strike& strike) {
  const size_t bytes = strike.count("afterBytes");
  if (bytes == 0) return {.deliver = [](Connection& connection) { connection.abandonWithReset(); }};
  const Answer answer = strike.victim.trueAnswer();
  return {.answer = answer, .deliver = [answer, bytes](Connection& connection) {
            sendPart(connection, answer, std::min(bytes, answer.body.size()));
            connection.abandonWithReset();
          }};
}

Plan neverAnswers(const Strike&) {
  return {.deliver = [](Connection& connection) { connection.waitForHangup(std::nullopt); }};
}

Plan serverCloses(const Strike&) {
  return {.deliver = [](Connection& connection) { connection.abandon(); }};
}

Plan endlessBody(const Strike& strike) {
  const size_t size = std::clamp<size_t>(strike.count("blockBytes"), 1, 1U << 20U);
  const auto pause = milliseconds(strike.parameters.at("seconds"));
  return {.answer = Answer{}, .deliver = [size, pause](Connection& connection) {
            const std::string piece = fmt::format("{:x}\r\n{}\r\n", size, std::string(size, 'a'));
            bool alive =
                connection.writeAll(head("Content-Type: application/json\r\nTransfer-Encoding: chunked\r\n"));
            while (alive)
              alive = connection.writeAll(piece) && (pause.count() == 0 || !connection.waitForHangup(pause));
          }};
}

Answer redirectTo(std::string location, int status) {
  return {.status = status, .contentType = "text/plain", .headers = {{"Location", std::move(location)}}};
}

Plan redirectLoop(const Strike& strike) {
  return {.answer = redirectTo(strike.victim.call.request.target, static_cast<int>(strike.count("status")))};
}

Plan redirect(const Strike& strike) {
  return {.answer = redirectTo(strike.text("to"), static_cast<int>(strike.count("status")))};
}

Plan emptyBody(const Strike&) { return {.answer = Answer{}}; }

Plan hugeHeaders(const Strike& strike) {
  const size_t lines = std::min<size_t>(strike.count("kilobytes"), 1U << 20U);
  const Answer answer = strike.victim.trueAnswer();
  return {.answer = answer, .deliver = [answer, lines](Connection& connection) {
            bool alive = connection.writeAll("HTTP/1.1 200 OK\r\nConnection: close\r\n");
            for (size_t line = 0; alive && line < lines; ++line) {
              alive = connection.writeAll(fmt::format("X-Padding-{}: {}\r\n", line, std::string(1000, 'x')));
            }
            if (alive)
              alive = connection.writeAll(fmt::format("Content-Length: {}\r\n\r\n", answer.body.size()));
            if (alive) connection.writeAll(answer.body.read(0, answer.body.size()));
          }};
}

Plan deepJSON(const Strike& strike) {
  const size_t depth = std::min<size_t>(strike.count("depth"), 10'000'000);
  return {.answer = Answer{.body = {R"({"status":"success","data":)" + std::string(depth, '[') +
                                    std::string(depth, ']') + "}"}}};
}

Plan notFound(const Strike&) {
  return {.answer = Answer{.status = 404,
                           .contentType = "text/html",
                           .body = {"<!doctype html><title>404</title><h1>Not Found</h1>\n"}}};
}

Plan status(const Strike& strike) {
  const auto code = static_cast<int>(std::clamp<size_t>(strike.count("status"), 200, 599));
  if (code == 204) return {.answer = Answer{.status = code, .contentType = "text/plain"}};
  return {.answer =
              Answer{.status = code,
                     .contentType = "text/html",
                     .body = {fmt::format("<!doctype html><title>{0}</title><h1>Status {0}</h1>\n", code)}}};
}

struct Kind {
  const char* name;
  const char* summary;
  json parameters;
  Plan (*plan)(const Strike&);
};

const std::vector<Kind>& kinds() {
  static const std::vector<Kind> all{
      {"noFill", "the endpoint has nothing to offer", json::object(), &noFill},
      {"serviceError", "an error envelope", {{"text", "The service is out of order."}}, &serviceError},
      {"notJSON", "a web page", {{"text", "<html><body><h1>Bad gateway</h1></body></html>"}}, &notJSON},
      {"wrongTypes",
       R"(JSON of the wrong types, in the "envelope" or in the records' "fields")",
       {{"where", "envelope"}},
       &wrongTypes},
      {"notUTF8", "the true answer with bytes in it that are not UTF-8", json::object(), &notUTF8},
      {"textReplaced",
       "the true answer with one text in the place of another",
       {{"what", "{{coins}}"}, {"with", ""}},
       &textReplaced},
      {"successWithStatus500", "the true answer with HTTP status 500", json::object(), &successWithStatus500},
      {"delay", "the true answer, later", {{"seconds", 1.0}}, &delay},
      {"bodyCutShort",
       "closes after so many bytes of the body (null: half of it)",
       {{"bytes", nullptr}},
       &bodyCutShort},
      {"bodyTruncated",
       "so many bytes of the body (null: half of it), as if that were all",
       {{"bytes", nullptr}},
       &bodyTruncated},
      {"connectionReset",
       "resets the connection, at once or after so many bytes of the body",
       {{"afterBytes", 0}},
       &connectionReset},
      {"neverAnswers", "keeps the connection open and silent", json::object(), &neverAnswers},
      {"endlessBody",
       "a body without end, in blocks with a pause of so many seconds between them",
       {{"blockBytes", block}, {"seconds", 0.0}},
       &endlessBody},
      {"redirectLoop", "redirects to itself", {{"status", 302}}, &redirectLoop},
      {"redirect",
       "redirects to any URL, relative or of any scheme",
       {{"to", "/"}, {"status", 302}},
       &redirect},
      {"emptyBody", "status 200 and a body of no bytes", json::object(), &emptyBody},
      {"hugeHeaders",
       "the true answer under so many kilobytes of headers",
       {{"kilobytes", 1024}},
       &hugeHeaders},
      {"deepJSON", "a success envelope whose \"data\" is nested so deep", {{"depth", 100'000}}, &deepJSON},
      {"notFound", "a 404 web page", json::object(), &notFound},
      {"status", "a web page under any HTTP status; none under 204", {{"status", 503}}, &status},
      {"serverCloses", "closes before a single byte", json::object(), &serverCloses},
  };
  return all;
}

}  // namespace

json knownFaults() {
  json known = json::object();
  for (const auto& kind : kinds()) {
    known[kind.name] = {{"summary", kind.summary}, {"parameters", kind.parameters}};
  }
  return known;
}

Plan planFault(const Fault& fault, const Victim& victim) {
  for (const auto& kind : kinds()) {
    if (fault.name == kind.name) return kind.plan(Strike{fault.parameters, victim});
  }
  return {.answer = victim.trueAnswer()};
}

}  // namespace vantorium::sandbox
