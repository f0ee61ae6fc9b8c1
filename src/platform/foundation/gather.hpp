#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "platform/foundation/async_block_operation.hpp"

namespace vantorium {

/// The one way to wait for several: starts `work` for each item, in order, at most `limit` at a time, on
/// worker threads. Each is given its item and a function to be called once, on any thread, with what came of
/// it. When all have ended, `completion` is called once with their outcomes in the order of the items: on the
/// thread of the last to end, or on the caller's when there are no items. Work that lets go of its function
/// without a call (an exception ended it, say) counts as `dropped`.
template <typename Outcome, typename Item>
void gather(std::vector<Item> items, int limit, const Outcome& dropped,
            std::function<void(const Item& item, std::function<void(Outcome)> ended)> work,
            std::function<void(std::vector<Outcome>)> completion) {
  if (items.empty()) {
    completion({});
    return;
  }
  // Each piece of work writes its own place; that it has ended is what the queue's lock makes known.
  const auto outcomes = std::make_shared<std::vector<Outcome>>(items.size(), dropped);
  const auto queue = std::make_shared<BlockOperationQueue>();
  queue->setMaxConcurrentOperationCount(limit);
  queue->setCompletionBlock(
      [outcomes, completion = std::move(completion)] { completion(std::move(*outcomes)); });
  std::vector<std::shared_ptr<AsyncBlockOperation>> operations;
  for (std::size_t index = 0; index < items.size(); ++index) {
    operations.push_back(std::make_shared<AsyncBlockOperation>(
        queue, [work, outcomes, index, item = std::move(items[index])](const auto& operation) {
          work(item, [outcomes, index, operation](Outcome outcome) {
            if (operation->isFinished()) return;
            (*outcomes)[index] = std::move(outcome);
            operation->finish();
          });
        }));
  }
  queue->addOperations(operations);
}

}  // namespace vantorium
