#include "ui/attachments/AttachmentList.h"

#include "ui/attachments/AttachmentTexts.h"
#include "ui/widgets/Widgets.h"

#include <adwaita.h>

#include <algorithm>
#include <cmath>

namespace ondrel::ui {

namespace {

// Rows that the list flies over need no picture.
constexpr std::chrono::milliseconds rest{120};
// Filled beyond the edges, so that a step of the wheel shows no empty row.
constexpr double margin = 2;

} // namespace

// A place of the toolkit's list, with the row that stands there for the time being.
struct AttachmentList::Slot {
  glib::Ref<GtkListItem> item;
  AttachmentRow row;
  bool isFilled = false;
  std::optional<std::string> thumbnail = std::nullopt; // the blob that was asked for

  const jmap::AttachmentInfo* attachment() const {
    auto* bound = gtk_list_item_get_item(item.get());
    return bound ? attachmentOf(bound) : nullptr;
  }
};

AttachmentList::AttachmentList(attachments::FilesViewModel& files, const platform::TextFormatting& formatting,
                               AttachmentListModel& model, GtkWidget* foot, Events events)
    : files_(files), formatting_(formatting), model_(model), foot_(glib::share(foot)),
      events_(std::move(events)), height_(AttachmentRow::naturalHeight()) {
  auto* factory = gtk_signal_list_item_factory_new();
  using Factory = GtkSignalListItemFactory;
  connections_.push_back(glib::connect<void(Factory*, GtkListItem*)>(
      GTK_SIGNAL_LIST_ITEM_FACTORY(factory), "setup", [this](Factory*, GtkListItem* item) { setUp(item); }));
  connections_.push_back(glib::connect<void(Factory*, GtkListItem*)>(
      GTK_SIGNAL_LIST_ITEM_FACTORY(factory), "bind", [this](Factory*, GtkListItem* item) { bind(item); }));
  connections_.push_back(glib::connect<void(Factory*, GtkListItem*)>(
      GTK_SIGNAL_LIST_ITEM_FACTORY(factory), "unbind", [this](Factory*, GtkListItem* item) {
        if (const auto found = slots_.find(item); found != slots_.end())
          leave(*found->second);
        if (item == footItem_)
          releaseFoot();
      }));
  connections_.push_back(glib::connect<void(Factory*, GtkListItem*)>(
      GTK_SIGNAL_LIST_ITEM_FACTORY(factory), "teardown",
      [this](Factory*, GtkListItem* item) { slots_.erase(item); }));

  view_ = gtk_list_view_new(GTK_SELECTION_MODEL(g_object_ref(model_.native())), factory);
  gtk_widget_set_name(view_, "attachments");
  gtk_widget_add_css_class(view_, "attachments");
  setAccessibleLabel(view_, "Attached Files");
  connections_.push_back(
      glib::connect<void(GtkListView*, guint)>(view_, "activate", [this](GtkListView*, guint position) {
        if (position < files_.rowCount())
          events_.doubleClicked(files_.row(position));
      }));

  scrolled_ = gtk_scrolled_window_new();
  gtk_widget_set_vexpand(scrolled_, TRUE);
  gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scrolled_), GTK_POLICY_NEVER, GTK_POLICY_AUTOMATIC);
  gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scrolled_), view_);
  scroll_ = gtk_scrolled_window_get_vadjustment(GTK_SCROLLED_WINDOW(scrolled_));
  connections_.push_back(
      glib::connect<void(GtkAdjustment*)>(scroll_, "changed", [this](GtkAdjustment*) { lookSoon(); }));
  connections_.push_back(glib::connect<void(GtkAdjustment*)>(
      scroll_, "value-changed",
      [this](GtkAdjustment*) {
        // In the middle of a layout, whose rows are not all in their places, the widgets stay as they are.
        if (tick_ == 0)
          look();
      },
      G_CONNECT_AFTER));

  subscriptions_.push_back(files_.rowsChanged.subscribe([this](const auto&) { lookSoon(); }));
  subscriptions_.push_back(files_.thumbnailChanged.subscribe([this](const std::string& blobId) {
    for (auto* slot : filled([&](const auto& attachment) { return attachment.blobId == blobId; }))
      slot->row.setThumbnail(files_.thumbnail(blobId));
  }));
  subscriptions_.push_back(files_.busyChanged.subscribe([this](const std::string& id) {
    for (auto* slot : filled([&](const auto& attachment) { return attachment.id == id; }))
      slot->row.setBusy(files_.isBusy(id));
  }));
}

AttachmentList::~AttachmentList() {
  if (tick_ != 0)
    gtk_widget_remove_tick_callback(view_, tick_);
  // The toolkit counts the rows when it lets go of them.
  gtk_list_view_set_model(GTK_LIST_VIEW(view_), nullptr);
}

void AttachmentList::setUp(GtkListItem* item) {
  auto slot =
      std::make_unique<Slot>(Slot{glib::share(item), AttachmentRow(height_, [this, item](AttachmentRow&) {
                                    if (const auto found = slots_.find(item); found != slots_.end())
                                      showMenu(*found->second);
                                  })});
  slots_.emplace(item, std::move(slot));
}

void AttachmentList::bind(GtkListItem* item) {
  const bool isFoot = !attachmentOf(gtk_list_item_get_item(item));
  gtk_list_item_set_selectable(item, !isFoot);
  gtk_list_item_set_activatable(item, !isFoot);
  if (isFoot || item == footItem_)
    releaseFoot();
  if (isFoot)
    footItem_ = item;
  auto* wanted = isFoot ? foot_.get() : slots_.at(item)->row.widget();
  if (gtk_list_item_get_child(item) != wanted)
    gtk_list_item_set_child(item, wanted);
  lookSoon();
}

void AttachmentList::releaseFoot() {
  if (auto* item = std::exchange(footItem_, nullptr))
    gtk_list_item_set_child(item, nullptr);
}

// Before the next layout.
void AttachmentList::lookSoon() {
  if (tick_ == 0)
    tick_ = gtk_widget_add_tick_callback(
        view_,
        [](GtkWidget*, GdkFrameClock*, gpointer self) -> gboolean {
          static_cast<AttachmentList*>(self)->tick_ = 0;
          static_cast<AttachmentList*>(self)->move();
          static_cast<AttachmentList*>(self)->look();
          return G_SOURCE_REMOVE;
        },
        this, nullptr);
}

double AttachmentList::rowHeight() const {
  graphene_rect_t bounds;
  for (const auto& [item, slot] : slots_)
    if (auto* widget = gtk_widget_get_parent(slot->row.widget());
        widget && gtk_widget_compute_bounds(widget, widget, &bounds) && bounds.size.height >= height_)
      return bounds.size.height; // with what the style puts around
  return height_;
}

void AttachmentList::moveSoon(Place to) {
  moving_ = std::move(to);
  framesToMove_ = 2; // the first of them gives the rows their places
  lookSoon();
}

void AttachmentList::move() {
  if (!moving_ || files_.rowCount() == 0) {
    moving_.reset();
  } else if (--framesToMove_ > 0) {
    lookSoon();
  } else {
    const auto to = *std::exchange(moving_, std::nullopt);
    gtk_adjustment_set_value(scroll_, static_cast<double>(to.position) * rowHeight() + to.offset);
    // The list may be there for a row that others come before now: it looks again when it is told of a move.
    g_signal_emit_by_name(scroll_, "value-changed");
  }
}

// All rows are of one height, so that what is in sight needs no asking of each.
void AttachmentList::look() {
  const auto height = rowHeight();
  const auto top = gtk_adjustment_get_value(scroll_) / height;
  const auto bottom = top + gtk_adjustment_get_page_size(scroll_) / height;
  bool hasNew = false;
  for (const auto& [item, slot] : slots_) {
    const auto position = gtk_list_item_get_position(item);
    const bool isInSight = slot->attachment() && position + 1 + margin > top && position - margin < bottom;
    if (isInSight && !slot->isFilled) {
      fill(*slot);
      hasNew = true;
    } else if (!isInSight && slot->isFilled) {
      leave(*slot);
    }
  }
  if (hasNew)
    rest_ = async::Timer(rest, [this] { loadThumbnails(); });
  isFootInSight_ = bottom > 0 && files_.rowCount() > 0 && bottom > static_cast<double>(files_.rowCount());
  if (isFootInSight_)
    events_.endReached();
}

void AttachmentList::fill(Slot& slot) {
  const auto& attachment = *slot.attachment();
  slot.isFilled = true;
  slot.row.show(attachmentTexts(attachment, formatting_), files_.categoryOf(attachment));
  slot.row.setThumbnail(files_.thumbnail(attachment.blobId));
  slot.row.setBusy(files_.isBusy(attachment.id));
}

void AttachmentList::leave(Slot& slot) {
  if (!std::exchange(slot.isFilled, false))
    return;
  slot.row.setThumbnail(nullptr);
  if (const auto blobId = std::exchange(slot.thumbnail, std::nullopt))
    files_.dropThumbnail(*blobId);
}

void AttachmentList::loadThumbnails() {
  for (auto* slot : filled([](const auto&) { return true; })) {
    if (slot->thumbnail)
      continue;
    const auto attachment = *slot->attachment();
    slot->thumbnail = attachment.blobId;
    files_.loadThumbnail(attachment);
  }
}

std::vector<AttachmentList::Slot*>
AttachmentList::filled(const std::function<bool(const jmap::AttachmentInfo&)>& matches) {
  std::vector<Slot*> result;
  for (const auto& [item, slot] : slots_)
    if (slot->isFilled && slot->attachment() && matches(*slot->attachment()))
      result.push_back(slot.get());
  // From the top.
  std::ranges::sort(result, {}, [](Slot* slot) { return gtk_list_item_get_position(slot->item.get()); });
  return result;
}

const jmap::AttachmentInfo* AttachmentList::rowAt(double x, double y) const {
  for (auto* widget = gtk_widget_pick(view_, x, y, GTK_PICK_DEFAULT); widget && widget != view_;
       widget = gtk_widget_get_parent(widget))
    for (const auto& [item, slot] : slots_)
      if (gtk_widget_get_parent(slot->row.widget()) == widget)
        return slot->attachment();
  return nullptr;
}

std::size_t AttachmentList::positionAt(double y) const {
  return static_cast<std::size_t>(std::max(0.0, (gtk_adjustment_get_value(scroll_) + y) / rowHeight()));
}

void AttachmentList::reveal(std::size_t position, bool takeFocus) {
  gtk_widget_activate_action(view_, "list.scroll-to-item", "u", static_cast<guint>(position));
  if (!takeFocus)
    return;
  for (const auto& [item, slot] : slots_)
    if (gtk_list_item_get_position(item) == position)
      if (auto* widget = gtk_widget_get_parent(slot->row.widget()))
        gtk_widget_grab_focus(widget);
}

void AttachmentList::scrollToTop() {
  moveSoon({});
}

std::optional<AttachmentList::Place> AttachmentList::place() const {
  const auto value = gtk_adjustment_get_value(scroll_);
  const auto position = static_cast<std::size_t>(std::floor(value / rowHeight()));
  if (value <= 0 || position >= files_.rowCount())
    return std::nullopt;
  return Place{files_.row(position).id, position, value - static_cast<double>(position) * rowHeight()};
}

std::optional<AttachmentList::Place> AttachmentList::leavePlace() {
  auto left = place();
  gtk_adjustment_set_value(scroll_, 0);
  return left;
}

bool AttachmentList::goTo(const Place& place) {
  const auto position = model_.positionOf(place.id, place.position);
  if (position)
    moveSoon({place.id, *position, place.offset});
  return position.has_value();
}

void AttachmentList::showMenu(std::size_t position) {
  for (const auto& [item, slot] : slots_)
    if (gtk_list_item_get_position(item) == position && slot->attachment())
      return showMenu(*slot);
}

void AttachmentList::showMenu(Slot& slot) {
  const auto* attachment = slot.attachment();
  auto* button = slot.row.menuButton();
  graphene_rect_t bounds;
  if (!attachment || !button || !gtk_widget_compute_bounds(button, scrolled_, &bounds))
    return;
  model_.select(gtk_list_item_get_position(slot.item.get()));
  const GdkRectangle at{static_cast<int>(bounds.origin.x), static_cast<int>(bounds.origin.y),
                        static_cast<int>(bounds.size.width), static_cast<int>(bounds.size.height)};
  events_.menuAsked(*attachment, at);
}

} // namespace ondrel::ui
