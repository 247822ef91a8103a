#include "ui/attachments/AttachmentList.h"

#include "base/Translation.h"
#include "ui/attachments/AttachmentRow.h"
#include "ui/attachments/AttachmentTexts.h"
#include "ui/attachments/RowsArea.h"
#include "ui/widgets/Widgets.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace ondrel::ui {

namespace {

// Rows that the list flies over need no picture.
constexpr std::chrono::milliseconds restTime{120};
// Filled beyond the edges, so that a step of the wheel shows no empty row.
constexpr std::size_t margin = 2;

// Of the whole top-level.
GtkWidget* focusOf(GtkWidget* widget) {
  auto* root = gtk_widget_get_root(widget);
  return root ? gtk_root_get_focus(root) : nullptr;
}

} // namespace

// A widget with the row that it shows for the time being.
struct AttachmentList::Slot {
  AttachmentRow row;
  std::optional<std::size_t> position = std::nullopt;  // absent: it shows none
  std::optional<std::string> thumbnail = std::nullopt; // the blob that was asked for
};

AttachmentList::AttachmentList(attachments::FilesViewModel& files, const platform::TextFormatting& formatting,
                               AttachmentSelection& selection, GtkWidget* foot, Events events)
    : files_(files), formatting_(formatting), selection_(selection), events_(std::move(events)),
      dateCharacters_(dateCharacters(formatting)),
      view_(makeRowsArea({.width = [this] { return width(); },
                          .allocate = [this](int width, int height) { allocate(width, height); },
                          .moveFocus = [this](GtkDirectionType direction) { return moveFocus(direction); }})),
      scrolled_(gtk_scrolled_window_new()),
      scroll_(gtk_scrolled_window_get_vadjustment(GTK_SCROLLED_WINDOW(scrolled_))), foot_(foot) {
  gtk_widget_set_name(view_.get(), "attachments");
  gtk_widget_add_css_class(view_.get(), "attachments");
  setAccessibleLabel(view_.get(), base::tr("Attached Files"));
  gtk_widget_set_parent(foot_, view_.get());
  gtk_widget_set_child_visible(foot_, FALSE);
  freeSlot();
  gtk_widget_set_vexpand(scrolled_, TRUE);
  gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scrolled_), GTK_POLICY_NEVER, GTK_POLICY_AUTOMATIC);
  gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scrolled_), view_.get());
  addController();
  follow();
}

AttachmentList::~AttachmentList() {
  if (tick_ != 0)
    gtk_widget_remove_tick_callback(view_.get(), tick_);
  connections_.clear();
  closeRowsArea(view_.get());
}

void AttachmentList::addController() {
  auto* keys = gtk_event_controller_key_new();
  connections_.push_back(glib::connect<gboolean(GtkEventControllerKey*, guint, guint, GdkModifierType)>(
      keys, "key-pressed",
      [this](GtkEventControllerKey*, guint key, guint, GdkModifierType modifiers) -> gboolean {
        return (modifiers & gtk_accelerator_get_default_mod_mask()) == 0 && handleKey(key);
      }));
  gtk_widget_add_controller(view_.get(), keys);
  auto* click = gtk_gesture_click_new();
  connections_.push_back(glib::connect<void(GtkGestureClick*, int, double, double)>(
      click, "pressed", [this](GtkGestureClick*, int count, double, double y) {
        const auto position = positionAt(y);
        if (!position)
          return;
        selection_.select(*position);
        reveal(*position, true);
        if (count == 2)
          events_.doubleClicked(files_.row(*position));
      }));
  gtk_widget_add_controller(view_.get(), GTK_EVENT_CONTROLLER(click));
}

void AttachmentList::follow() {
  connections_.push_back(
      glib::connect<void(GtkAdjustment*)>(scroll_, "value-changed", [this](GtkAdjustment*) {
        // In the middle of a layout the rows stay as they are.
        if (isAllocating_)
          lookSoon();
        else
          look();
      }));
  subscriptions_.push_back(files_.rowsChanged.subscribe([this](const auto& change) { rowsChanged(change); }));
  const auto eachWhere = [this](const std::string jmap::AttachmentInfo::* key, const std::string& value,
                                const auto& act) {
    for (const auto& slot : slots_)
      if (slot->position && attachment(*slot).*key == value)
        act(*slot);
  };
  subscriptions_.push_back(files_.thumbnailChanged.subscribe([this, eachWhere](const std::string& blobId) {
    eachWhere(&jmap::AttachmentInfo::blobId, blobId,
              [&](Slot& slot) { slot.row.setThumbnail(files_.thumbnail(blobId)); });
  }));
  subscriptions_.push_back(files_.busyChanged.subscribe([this, eachWhere](const std::string& id) {
    eachWhere(&jmap::AttachmentInfo::id, id, [&](Slot& slot) { slot.row.setBusy(files_.isBusy(id)); });
  }));
  subscriptions_.push_back(selection_.changed.subscribe([this] {
    for (const auto& slot : slots_)
      if (slot->position)
        slot->row.setSelected(selection_.isSelected(attachment(*slot)));
  }));
}

const jmap::AttachmentInfo& AttachmentList::attachment(const Slot& slot) const {
  return files_.row(*slot.position);
}

int AttachmentList::width() const {
  int widest = 0;
  for (auto* widget : {slots_.front()->row.widget(), foot_}) {
    int least = 0;
    gtk_widget_measure(widget, GTK_ORIENTATION_HORIZONTAL, -1, &least, nullptr, nullptr, nullptr);
    widest = std::max(widest, least);
  }
  return widest;
}

void AttachmentList::allocate(int width, int height) {
  isAllocating_ = true;
  // With the user's font and style, which may change.
  gtk_widget_measure(slots_.front()->row.widget(), GTK_ORIENTATION_VERTICAL, width, nullptr, &height_,
                     nullptr, nullptr);
  height_ = std::max(height_, 1);
  gtk_widget_measure(foot_, GTK_ORIENTATION_VERTICAL, width, nullptr, &footHeight_, nullptr, nullptr);
  if (std::exchange(page_, height) != height)
    lookSoon();
  adjustRange();
  const auto top = static_cast<int>(std::lround(gtk_adjustment_get_value(scroll_)));
  const auto place = [&](GtkWidget* widget, std::size_t position, int itsHeight) {
    // Far away, one that has the keyboard needs no more than to be out of sight.
    const auto y =
        std::clamp<std::int64_t>(static_cast<std::int64_t>(position) * height_ - top, -itsHeight, height);
    const GtkAllocation at{0, static_cast<int>(y), width, itsHeight};
    gtk_widget_size_allocate(widget, &at, -1);
  };
  for (const auto& slot : slots_)
    if (slot->position)
      place(slot->row.widget(), *slot->position, height_);
  if (hasFoot_)
    place(foot_, files_.rowCount(), footHeight_);
  isAllocating_ = false;
}

// How far it can be scrolled, as it is now.
void AttachmentList::adjustRange() {
  const auto page = static_cast<double>(page_);
  const auto all = static_cast<double>(files_.rowCount()) * height_ + (hasFoot_ ? footHeight_ : 0);
  const auto upper = std::max(all, page);
  gtk_adjustment_configure(scroll_, std::clamp(gtk_adjustment_get_value(scroll_), 0.0, upper - page), 0,
                           upper, height_, std::max(page - height_, 1.0), page);
}

void AttachmentList::rowsChanged(const attachments::FilesViewModel::RowsChange& change) {
  for (const auto& slot : slots_) {
    if (!slot->position || *slot->position < change.position)
      continue;
    if (*slot->position >= change.position + change.removed)
      *slot->position += change.added - change.removed;
    else
      leave(*slot);
  }
  lookSoon();
}

void AttachmentList::setHasFoot(bool hasFoot) {
  if (std::exchange(hasFoot_, hasFoot) == hasFoot)
    return;
  gtk_widget_set_child_visible(foot_, hasFoot);
  lookSoon();
}

// Before the next layout.
void AttachmentList::lookSoon() {
  if (tick_ == 0)
    tick_ = gtk_widget_add_tick_callback(
        view_.get(),
        [](GtkWidget*, GdkFrameClock*, gpointer data) -> gboolean {
          auto* self = static_cast<AttachmentList*>(data);
          self->tick_ = 0;
          self->adjustRange();
          self->look();
          return G_SOURCE_REMOVE;
        },
        this, nullptr);
}

// Gives widgets to the rows in sight.
void AttachmentList::look() {
  const auto count = files_.rowCount();
  const auto value = gtk_adjustment_get_value(scroll_);
  const auto top = static_cast<std::size_t>(value / height_);
  const auto end =
      page_ > 1 ? std::min(count, static_cast<std::size_t>((value + page_) / height_) + 1 + margin) : 0;
  const auto first = std::min(end, top - std::min(top, margin));
  const auto focused = focusedPosition();
  std::vector<bool> isThere(end - first);
  for (const auto& slot : slots_) {
    if (slot->position && *slot->position >= first && *slot->position < end)
      isThere[*slot->position - first] = true;
    else if (slot->position && slot->position != focused)
      leave(*slot);
  }
  bool hasNew = false;
  for (auto position = first; position < end; ++position) {
    if (isThere[position - first])
      continue;
    fill(freeSlot(), position);
    hasNew = true;
  }
  if (hasNew)
    rest_ = async::Timer(restTime, [this] { rest(); });
  gtk_widget_queue_allocate(view_.get());
  if (hasLostFocus_ && count > 0)
    takeBackFocus();
  isFootInSight_ = hasFoot_ && count > 0 && page_ > 1 && value + page_ > static_cast<double>(count) * height_;
  if (isFootInSight_)
    events_.endReached();
}

AttachmentList::Slot& AttachmentList::freeSlot() {
  const auto found = std::ranges::find_if(slots_, [](const auto& slot) { return !slot->position; });
  if (found != slots_.end())
    return **found;
  auto made = std::make_unique<Slot>(Slot{AttachmentRow(dateCharacters_, [this, index = slots_.size()] {
    if (const auto position = slots_[index]->position)
      showMenu(*position);
  })});
  gtk_widget_set_parent(made->row.widget(), view_.get());
  gtk_widget_set_child_visible(made->row.widget(), FALSE);
  return *slots_.emplace_back(std::move(made));
}

void AttachmentList::fill(Slot& slot, std::size_t position) {
  slot.position = position;
  const auto& info = attachment(slot);
  slot.row.show(attachmentTexts(info, formatting_), files_.categoryOf(info));
  slot.row.setThumbnail(files_.thumbnail(info.blobId));
  slot.row.setBusy(files_.isBusy(info.id));
  slot.row.setSelected(selection_.isSelected(info));
  gtk_widget_set_child_visible(slot.row.widget(), TRUE);
}

void AttachmentList::leave(Slot& slot) {
  if (!hasLostFocus_ && gtk_widget_get_focus_child(view_.get()) == slot.row.widget()) {
    hasLostFocus_ = true;
    focusSince_.reset();
    loss_ = async::Timer(restTime, [this] { focusSince_ = focusOf(view_.get()); });
  }
  slot.position.reset();
  gtk_widget_set_child_visible(slot.row.widget(), FALSE);
  slot.row.setThumbnail(nullptr);
  if (const auto blobId = std::exchange(slot.thumbnail, std::nullopt))
    files_.dropThumbnail(*blobId);
}

// The list stands still: its rows get their pictures, from the top, and the order in which they are read out.
void AttachmentList::rest() {
  std::vector<Slot*> shown;
  for (const auto& slot : slots_)
    if (slot->position)
      shown.push_back(slot.get());
  std::ranges::sort(shown, {}, [](const Slot* slot) { return *slot->position; });
  GtkWidget* before = nullptr;
  for (auto* slot : shown) {
    auto* widget = slot->row.widget();
    if (gtk_widget_get_prev_sibling(widget) != before)
      gtk_widget_insert_after(widget, view_.get(), before);
    before = widget;
    if (slot->thumbnail)
      continue;
    const auto info = attachment(*slot);
    slot->thumbnail = info.blobId;
    files_.loadThumbnail(info);
  }
}

AttachmentList::Slot* AttachmentList::slotAt(std::size_t position) const {
  const auto found = std::ranges::find(slots_, position, &Slot::position);
  return found == slots_.end() ? nullptr : found->get();
}

std::optional<std::size_t> AttachmentList::focusedPosition() const {
  auto* focused = gtk_widget_get_focus_child(view_.get());
  const auto found = std::ranges::find(slots_, focused, [](const auto& slot) { return slot->row.widget(); });
  return found == slots_.end() ? std::nullopt : (*found)->position;
}

// One that is in sight: the selected one, or else the uppermost.
bool AttachmentList::focusRow() {
  const auto top = positionAt(height_ - 1);
  auto* slot = slotAt(selection_.position().value_or(top.value_or(0)));
  if (!slot)
    slot = slotAt(top.value_or(0));
  return slot && gtk_widget_grab_focus(slot->row.widget());
}

// Unless the user has put it elsewhere while there were no rows.
void AttachmentList::takeBackFocus() {
  hasLostFocus_ = false;
  loss_.stop();
  if (!focusSince_ || *focusSince_ == focusOf(view_.get()))
    focusRow();
}

// Tab goes to one row, to its button, to the foot and on: the arrow keys go from row to row.
bool AttachmentList::moveFocus(GtkDirectionType direction) {
  if (direction != GTK_DIR_TAB_FORWARD && direction != GTK_DIR_TAB_BACKWARD)
    return false;
  auto* child = gtk_widget_get_focus_child(view_.get());
  if (child && gtk_widget_child_focus(child, direction))
    return true;
  const bool isForward = direction == GTK_DIR_TAB_FORWARD;
  if (!child)
    return (!isForward && focusFoot(direction)) || focusRow();
  return isForward ? child != foot_ && focusFoot(direction) : child == foot_ && focusRow();
}

bool AttachmentList::focusFoot(GtkDirectionType direction) {
  if (!hasFoot_ || !gtk_widget_child_focus(foot_, direction))
    return false;
  gtk_adjustment_set_value(scroll_, gtk_adjustment_get_upper(scroll_));
  return true;
}

bool AttachmentList::handleKey(guint key) {
  const auto count = static_cast<std::int64_t>(files_.rowCount());
  const bool isInFoot = gtk_widget_get_focus_child(view_.get()) == foot_;
  const auto at =
      isInFoot ? count
               : static_cast<std::int64_t>(focusedPosition().value_or(selection_.position().value_or(0)));
  const std::int64_t page = std::max(1, page_ / height_ - 1);
  std::int64_t to = 0;
  switch (key) {
  case GDK_KEY_Up:
  case GDK_KEY_KP_Up:
    to = at - 1;
    break;
  case GDK_KEY_Down:
  case GDK_KEY_KP_Down:
    to = at + 1;
    break;
  case GDK_KEY_Page_Up:
  case GDK_KEY_KP_Page_Up:
    to = at - page;
    break;
  case GDK_KEY_Page_Down:
  case GDK_KEY_KP_Page_Down:
    to = at + page;
    break;
  case GDK_KEY_Home:
  case GDK_KEY_KP_Home:
    break;
  case GDK_KEY_End:
  case GDK_KEY_KP_End:
    to = count;
    break;
  default:
    return false;
  }
  if (count == 0 || (isInFoot && to >= count))
    return true;
  // Behind the last row comes the foot.
  if (at == count - 1 && to > at) {
    // Where the end loads more by itself, the button would go from under the keyboard.
    if (files_.isFiltered() || files_.hasPageFailed())
      focusFoot(GTK_DIR_TAB_FORWARD);
    else
      gtk_adjustment_set_value(scroll_, gtk_adjustment_get_upper(scroll_));
    return true;
  }
  to = std::clamp<std::int64_t>(to, 0, count - 1);
  selection_.select(static_cast<std::size_t>(to));
  reveal(static_cast<std::size_t>(to), true);
  return true;
}

std::optional<std::size_t> AttachmentList::positionAt(double y) const {
  const auto position =
      static_cast<std::size_t>(std::max(0.0, (gtk_adjustment_get_value(scroll_) + y) / height_));
  return position < files_.rowCount() ? std::optional(position) : std::nullopt;
}

void AttachmentList::reveal(std::size_t position, bool takeFocus) {
  const auto top = static_cast<double>(position) * height_;
  adjustRange();
  gtk_adjustment_clamp_page(scroll_, top, top + height_);
  look();
  if (auto* slot = slotAt(position); slot && takeFocus)
    gtk_widget_grab_focus(slot->row.widget());
}

void AttachmentList::scrollToTop() {
  gtk_adjustment_set_value(scroll_, 0);
}

std::optional<AttachmentList::Place> AttachmentList::place() const {
  const auto value = gtk_adjustment_get_value(scroll_);
  const auto position = positionAt(0);
  if (value <= 0 || !position)
    return std::nullopt;
  return Place{files_.row(*position).id, *position, value - static_cast<double>(*position) * height_};
}

std::optional<AttachmentList::Place> AttachmentList::leavePlace() {
  auto left = place();
  scrollToTop();
  return left;
}

bool AttachmentList::goTo(const Place& place, bool isNearEnough) {
  const auto position = selection_.positionOf(place.id, place.position);
  if (!position)
    return false;
  adjustRange();
  const auto value = static_cast<double>(*position) * height_ + place.offset;
  // The foot may be lower in a moment.
  if (!isNearEnough && value > static_cast<double>(files_.rowCount()) * height_ - page_)
    return false;
  const bool hasFocus = focusedPosition().has_value();
  gtk_adjustment_set_value(scroll_, value);
  if (hasFocus)
    focusRow(); // the selected one may not have been listed before
  return true;
}

void AttachmentList::showMenu(std::size_t position) {
  const auto* slot = slotAt(position);
  graphene_rect_t bounds;
  if (!slot || !gtk_widget_compute_bounds(slot->row.menuButton(), scrolled_, &bounds))
    return;
  selection_.select(position);
  const GdkRectangle at{static_cast<int>(bounds.origin.x), static_cast<int>(bounds.origin.y),
                        static_cast<int>(bounds.size.width), static_cast<int>(bounds.size.height)};
  events_.menuAsked(files_.row(position), at);
}

} // namespace ondrel::ui
