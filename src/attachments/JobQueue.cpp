#include "attachments/JobQueue.h"

#include <utility>

namespace ondrel::attachments {

JobQueue::Place::Place(std::shared_ptr<Line> line)
    : line_(std::move(line)), self_(line_->insert(line_->end(), Waiting())) {
}

JobQueue::Place::~Place() {
  if (!line_)
    return;
  line_->erase(self_);
  if (line_->empty())
    return;
  if (auto next = std::exchange(line_->front(), std::nullopt))
    next->resolve(true);
}

bool JobQueue::Place::isFirst() const {
  return line_->begin() == self_;
}

async::Task<bool> JobQueue::Place::turn() const {
  while (!isFirst()) {
    auto [resolver, future] = async::makeFuture<bool>();
    *self_ = std::move(resolver);
    const auto came = co_await std::move(future);
    if (!came)
      co_return false;
  }
  co_return true;
}

} // namespace ondrel::attachments
