#pragma once

#include "attachments/AttachmentCategory.h"
#include "base/Event.h"
#include "jmap/mail/AttachmentInfo.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace ondrel::attachments {

// So many rows at a position have been replaced by others.
struct RowsChange {
  std::size_t position = 0;
  std::size_t removed = 0;
  std::size_t added = 0;

  bool operator==(const RowsChange&) const = default;
};

// The loaded attachments in the server's order, and which of them a filter lets through. Main thread only.
class AttachmentRows {
 public:
  using Row = jmap::AttachmentInfo;

  // The types outlive it.
  explicit AttachmentRows(const platform::ContentTypes& types) : types_(types) {}

  bool isEmpty() const { return rows_.empty(); }
  const Row& last() const { return rows_.back(); } // of all that are loaded
  // Those that the filter lets through. References hold until clear().
  std::size_t count() const { return shown_.size(); }
  const Row& row(std::size_t index) const { return rows_[shown_[index]]; }
  AttachmentCategory categoryOf(const Row& row) const;

  // The next page. A row that an earlier page has brought is left out: mail that comes meanwhile shifts the
  // pages.
  void append(std::vector<Row> page);
  void clear();
  // Rows that hold the text in their name, sender or subject, case and accents aside, and are of one of the
  // categories; no text or no categories let all through.
  void setFilter(std::string_view text, const std::set<AttachmentCategory>& categories);
  bool isFiltered() const { return !needle_.empty() || wanted_ != 0; }

  // Of the rows that the filter lets through. Several come one after the other, and at each the rows are as
  // told until then. Nothing may be changed from inside.
  base::Event<const RowsChange&> changed;

 private:
  using Index = std::uint32_t;

  bool isWanted(Index row) const;
  std::string_view key(Index row) const;
  std::vector<Index> matching(std::string_view needle, std::size_t first) const;
  void show(const std::vector<Index>& next);

  const platform::ContentTypes& types_;
  mutable std::map<std::string, AttachmentCategory, std::less<>> categories_; // by type
  std::deque<Row> rows_;
  std::unordered_set<std::string_view> ids_; // of the rows
  std::vector<AttachmentCategory> rowCategories_;
  // What is searched, one row behind the other, so that a search is one pass over the memory.
  std::string keys_;
  std::vector<std::size_t> keyEnds_;

  std::string needle_;
  unsigned wanted_ = 0; // a bit for each category
  std::vector<Index> shown_;
};

} // namespace ondrel::attachments
