#pragma once

#include "sandbox/service/answer.hpp"
#include "sandbox/service/call.hpp"
#include "sandbox/service/faults.hpp"
#include "sandbox/service/journal.hpp"
#include "sandbox/service/ledger.hpp"

namespace vantorium::sandbox {

/// Answers what lies under /sandbox/: the service as its operator sees it. Neither recorded nor struck by
/// faults.
Answer controlAnswer(const Call& call, Journal& journal, Ledger& ledger, FaultTable& faults);

}  // namespace vantorium::sandbox
