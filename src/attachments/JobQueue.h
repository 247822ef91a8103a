#pragma once

#include "async/Future.h"
#include "async/Task.h"

#include <list>
#include <memory>
#include <optional>

namespace ondrel::attachments {

// Lets one job run at a time, in the order in which they took their places. Main thread only.
class JobQueue {
 public:
  // A place in the queue, which is left when this object goes; that may be before its turn. May outlive the
  // queue.
  class Place {
   public:
    Place(Place&&) noexcept = default;
    Place& operator=(Place&&) = delete;
    ~Place();

    // Waits until all before have left. False when the task is cancelled.
    async::Task<bool> turn() const;
    bool isFirst() const;

   private:
    friend JobQueue;
    using Waiting = std::optional<async::Resolver<bool>>;
    using Line = std::list<Waiting>;
    explicit Place(std::shared_ptr<Line> line);

    std::shared_ptr<Line> line_; // null once moved from
    Line::iterator self_;
  };

  Place take() { return Place(line_); }

 private:
  std::shared_ptr<Place::Line> line_ = std::make_shared<Place::Line>();
};

} // namespace ondrel::attachments
