#include "attachments/AttachmentRows.h"

#include "attachments/SearchKey.h"
#include "base/Text.h"

#include <algorithm>

namespace ondrel::attachments {

namespace {

// In no text: between the fields of a row, and behind it.
constexpr char fieldEnd = '\xFF';

// What differs more is told as one change: each costs those that follow the rows more than a row.
constexpr std::size_t mostChanges = 32;

unsigned bit(AttachmentCategory category) {
  return 1U << static_cast<unsigned>(category);
}

// A part of one ascending list in whose place stands a part of another.
struct Difference {
  std::size_t begin = 0;
  std::size_t end = 0;
  std::size_t otherBegin = 0;
  std::size_t otherEnd = 0;
};

// In their order; one that holds them all where they are too many.
template <class Index>
std::vector<Difference> differences(const std::vector<Index>& old, const std::vector<Index>& next) {
  std::vector<Difference> found;
  std::size_t i = 0;
  std::size_t j = 0;
  while (i < old.size() || j < next.size()) {
    if (i < old.size() && j < next.size() && old[i] == next[j]) {
      ++i;
      ++j;
      continue;
    }
    if (found.empty() || found.back().end != i || found.back().otherEnd != j) {
      if (found.size() == mostChanges) {
        const auto [same, otherSame] = std::mismatch(old.rbegin(), old.rend(), next.rbegin(), next.rend());
        const auto& begin = found.front();
        return {{begin.begin, static_cast<std::size_t>(old.rend() - same), begin.otherBegin,
                 static_cast<std::size_t>(next.rend() - otherSame)}};
      }
      found.push_back({i, i, j, j});
    }
    if (j == next.size() || (i < old.size() && old[i] < next[j]))
      ++i;
    else
      ++j;
    found.back().end = i;
    found.back().otherEnd = j;
  }
  return found;
}

} // namespace

AttachmentCategory AttachmentRows::categoryOf(const Row& row) const {
  const auto found = categories_.find(row.type);
  if (found != categories_.end())
    return found->second;
  return categories_.emplace(row.type, category(types_, row.type)).first->second;
}

void AttachmentRows::append(std::vector<Row> page) {
  std::erase_if(page, [this](const Row& row) { return ids_.contains(row.id); });
  const auto first = rows_.size();
  for (auto& row : page) {
    for (const auto* field : {&row.name, &row.from, &row.subject}) {
      appendSearchKey(keys_, *field);
      keys_ += fieldEnd;
    }
    keyEnds_.push_back(keys_.size());
    rowCategories_.push_back(categoryOf(row));
    rows_.push_back(std::move(row));
    ids_.insert(rows_.back().id);
  }
  auto next = shown_;
  for (const auto row : matching(needle_, first))
    next.push_back(row);
  show(next);
}

void AttachmentRows::clear() {
  const auto count = shown_.size();
  ids_.clear();
  rows_.clear();
  rowCategories_.clear();
  keys_.clear();
  keyEnds_.clear();
  shown_.clear();
  if (count > 0)
    changed.emit({0, count, 0});
}

void AttachmentRows::setFilter(std::string_view text, const std::set<AttachmentCategory>& categories) {
  auto needle = searchKey(base::trimmed(text));
  unsigned wanted = 0;
  for (const auto one : categories)
    wanted |= bit(one);
  const bool isNarrower = wanted == wanted_ && needle.contains(needle_);
  if (isNarrower && needle == needle_)
    return;
  wanted_ = wanted;
  needle_ = std::move(needle);
  // One row after the other is slower than all in one pass, unless they are few.
  constexpr std::size_t few = 8;
  if (!isNarrower || shown_.size() > rows_.size() / few) {
    show(matching(needle_, 0));
    return;
  }
  std::vector<Index> next;
  std::ranges::copy_if(shown_, std::back_inserter(next),
                       [this](Index row) { return key(row).contains(needle_); });
  show(next);
}

bool AttachmentRows::isWanted(Index row) const {
  return wanted_ == 0 || (wanted_ & bit(rowCategories_[row])) != 0;
}

std::string_view AttachmentRows::key(Index row) const {
  const auto begin = row == 0 ? 0 : keyEnds_[row - 1];
  return std::string_view(keys_).substr(begin, keyEnds_[row] - begin);
}

std::vector<AttachmentRows::Index> AttachmentRows::matching(std::string_view needle,
                                                            std::size_t first) const {
  std::vector<Index> found;
  auto row = static_cast<Index>(first);
  if (needle.empty()) {
    for (; row < rows_.size(); ++row)
      if (isWanted(row))
        found.push_back(row);
    return found;
  }
  // All keys as one text, which passes over those without a match faster than one after the other.
  for (std::size_t from = first == 0 ? 0 : keyEnds_[first - 1]; from < keys_.size(); from = keyEnds_[row++]) {
    const auto at = findFrom(keys_, needle, from);
    if (at == keys_.npos)
      break;
    while (keyEnds_[row] <= at)
      ++row;
    if (isWanted(row))
      found.push_back(row);
  }
  return found;
}

void AttachmentRows::show(const std::vector<Index>& next) {
  for (const auto& [begin, end, otherBegin, otherEnd] : differences(shown_, next)) {
    // All before it is as it will be.
    const auto at = static_cast<std::ptrdiff_t>(otherBegin);
    const auto removed = end - begin;
    shown_.erase(shown_.begin() + at, shown_.begin() + at + static_cast<std::ptrdiff_t>(removed));
    shown_.insert(shown_.begin() + at, next.begin() + at,
                  next.begin() + static_cast<std::ptrdiff_t>(otherEnd));
    changed.emit({otherBegin, removed, otherEnd - otherBegin});
  }
}

} // namespace ondrel::attachments
