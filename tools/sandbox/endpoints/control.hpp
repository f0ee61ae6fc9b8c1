#pragma once

#include "sandbox/service/answer.hpp"
#include "sandbox/service/call.hpp"
#include "sandbox/service/faults.hpp"
#include "sandbox/service/journal.hpp"
#include "sandbox/service/ledger.hpp"
#include "sandbox/service/tally.hpp"
#include "sandbox/service/variety.hpp"

namespace vantorium::sandbox {

/// What an operator looks at and changes.
struct Operated {
  Journal& journal;
  Ledger& ledger;
  FaultTable& faults;
  Tally& tally;
  const Variety& variety;
};

/// Answers what lies under /sandbox/: the service as its operator sees it. Neither recorded nor struck by
/// faults.
Answer controlAnswer(const Call& call, const Operated& operated);

}  // namespace vantorium::sandbox
