// What the service sends, as far as it is JSON: the parser, the envelope of every answer, a campaign.
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/check.hpp"
#include "model/campaign.hpp"
#include "model/json.hpp"
#include "protocol/envelope.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace vantorium;
  const std::string text(reinterpret_cast<const char*>(bytes), size);

  std::optional<Error> error;
  const auto value = parseJSON(text, error);
  FUZZ_CHECK(value.has_value() != error.has_value());

  const Envelope envelope = Envelope::read(Data(text), std::nullopt);
  FUZZ_CHECK(envelope.object.has_value() != envelope.error.has_value());
  FUZZ_CHECK((envelope.flaw == Envelope::Flaw::notJSON) == !value);

  if (value) {
    FUZZ_CHECK(parseJSON(prettyPrinted(*value), error).has_value());
    const Campaign campaign(*value);
    FUZZ_CHECK(!campaign.identifier.empty());
  }
  return 0;
}
