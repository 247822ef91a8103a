#pragma once

#include "platform/desktop/StatusItem.h"

#include <utility>
#include <vector>

namespace ondrel::support {

// A panel that is always there.
class FakeStatusItem final : public platform::StatusItem {
 public:
  void setFace(Face value) override { face = std::move(value); }
  void setMenu(std::vector<Row> value) override { rows = std::move(value); }
  void setInserted(bool inserted) override { isShown.set(inserted); }

  Face face;
  std::vector<Row> rows;
};

} // namespace ondrel::support
