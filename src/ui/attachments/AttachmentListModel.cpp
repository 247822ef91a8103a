#include "ui/attachments/AttachmentListModel.h"

#include <algorithm>

namespace ondrel::ui {

namespace {

// When what it shows goes, the toolkit looks for it in all that comes, row by row. Who sees a new list sees
// its beginning, so that's where it is worth looking.
constexpr std::size_t searchedRows = 500;

struct Item {
  GObject parent;
  struct Content {
    jmap::AttachmentInfo attachment;
    std::weak_ptr<std::unordered_map<std::string, gpointer>> live;
  };
  Content* content; // null in the foot
};
struct ItemClass {
  GObjectClass parent;
};
G_DEFINE_TYPE(Item, ondrel_attachment_item, G_TYPE_OBJECT)

void ondrel_attachment_item_init(Item*) {
}

void finalizeItem(GObject* object) {
  if (const auto* content = reinterpret_cast<Item*>(object)->content) {
    // Another one may have its id by now.
    if (const auto live = content->live.lock())
      if (const auto found = live->find(content->attachment.id);
          found != live->end() && found->second == object)
        live->erase(found);
    delete content;
  }
  G_OBJECT_CLASS(ondrel_attachment_item_parent_class)->finalize(object);
}

void ondrel_attachment_item_class_init(ItemClass* type) {
  G_OBJECT_CLASS(type)->finalize = finalizeItem;
}

struct List {
  GObject parent;
  AttachmentListModel* owner; // null once it has gone
};
struct ListClass {
  GObjectClass parent;
};

AttachmentListModel* ownerOf(gpointer list) {
  return static_cast<List*>(list)->owner;
}

void initList(GListModelInterface* type) {
  type->get_item_type = [](GListModel*) { return ondrel_attachment_item_get_type(); };
  type->get_n_items = [](GListModel* list) -> guint {
    return ownerOf(list) ? ownerOf(list)->itemCount() : 0;
  };
  type->get_item = [](GListModel* list, guint position) -> gpointer {
    return ownerOf(list) ? ownerOf(list)->item(position) : nullptr;
  };
}

void initSelection(GtkSelectionModelInterface* type) {
  type->is_selected = [](GtkSelectionModel* list, guint position) -> gboolean {
    return ownerOf(list) && ownerOf(list)->isSelected(position);
  };
  type->get_selection_in_range = [](GtkSelectionModel* list, guint position, guint count) {
    auto* result = gtk_bitset_new_empty();
    if (const auto selected = ownerOf(list) ? ownerOf(list)->selectedPosition() : std::nullopt;
        selected && *selected >= position && *selected - position < count)
      gtk_bitset_add(result, static_cast<guint>(*selected));
    return result;
  };
  type->select_item = [](GtkSelectionModel* list, guint position, gboolean) -> gboolean {
    if (ownerOf(list))
      ownerOf(list)->select(position);
    return ownerOf(list) != nullptr;
  };
}

G_DEFINE_TYPE_WITH_CODE(List, ondrel_attachment_list, G_TYPE_OBJECT,
                        G_IMPLEMENT_INTERFACE(G_TYPE_LIST_MODEL, initList)
                            G_IMPLEMENT_INTERFACE(GTK_TYPE_SELECTION_MODEL, initSelection))

void ondrel_attachment_list_init(List*) {
}

void ondrel_attachment_list_class_init(ListClass*) {
}

} // namespace

const jmap::AttachmentInfo* attachmentOf(gpointer item) {
  const auto* content = static_cast<Item*>(item)->content;
  return content ? &content->attachment : nullptr;
}

AttachmentListModel::AttachmentListModel(attachments::FilesViewModel& files)
    : files_(files),
      native_(glib::adopt(GTK_SELECTION_MODEL(g_object_new(ondrel_attachment_list_get_type(), nullptr)))),
      foot_(glib::adopt(G_OBJECT(g_object_new(ondrel_attachment_item_get_type(), nullptr)))),
      rowsChanged_(files.rowsChanged.subscribe([this](const auto& change) { changed(change); })) {
  reinterpret_cast<List*>(native_.get())->owner = this;
}

AttachmentListModel::~AttachmentListModel() {
  reinterpret_cast<List*>(native_.get())->owner = nullptr;
}

void AttachmentListModel::changed(const attachments::FilesViewModel::RowsChange& change) {
  const auto [position, removed, added] = change;
  if (selectedHint_ >= position + removed)
    selectedHint_ += added - removed;
  const auto searched = removed > 0 ? std::min(added, searchedRows) : added;
  unheard_ = {position + searched, added - searched};
  // The foot comes with the first row and goes with the last.
  const auto after = files_.rowCount();
  const auto before = after - added + removed;
  auto* list = G_LIST_MODEL(native_.get());
  g_list_model_items_changed(list, static_cast<guint>(position),
                             static_cast<guint>(removed + (hasFoot_ && after == 0 && before > 0 ? 1 : 0)),
                             static_cast<guint>(searched + (hasFoot_ && before == 0 && after > 0 ? 1 : 0)));
  if (const auto rest = std::exchange(unheard_, {}); rest.count > 0)
    g_list_model_items_changed(list, static_cast<guint>(rest.position), 0, static_cast<guint>(rest.count));
}

void AttachmentListModel::setHasFoot(bool hasFoot) {
  if (std::exchange(hasFoot_, hasFoot) != hasFoot && files_.rowCount() > 0)
    g_list_model_items_changed(G_LIST_MODEL(native_.get()), static_cast<guint>(files_.rowCount()),
                               hasFoot ? 0 : 1, hasFoot ? 1 : 0);
}

std::size_t AttachmentListModel::rowAt(guint position) const {
  return position < unheard_.position ? position : position + unheard_.count;
}

guint AttachmentListModel::itemCount() const {
  const auto rows = files_.rowCount();
  return rows == 0 ? 0 : static_cast<guint>(rows - unheard_.count) + (hasFoot_ ? 1 : 0);
}

gpointer AttachmentListModel::item(guint position) {
  const auto row = rowAt(position);
  if (row >= files_.rowCount())
    return hasFoot_ && row == files_.rowCount() && row > 0 ? g_object_ref(foot_.get()) : nullptr;
  const auto& attachment = files_.row(row);
  if (const auto found = live_->find(attachment.id);
      found != live_->end() && *attachmentOf(found->second) == attachment)
    return g_object_ref(found->second);
  auto* made = static_cast<Item*>(g_object_new(ondrel_attachment_item_get_type(), nullptr));
  made->content = new Item::Content{attachment, live_};
  live_->insert_or_assign(attachment.id, made);
  return made;
}

bool AttachmentListModel::isSelected(guint position) const {
  const auto row = rowAt(position);
  return selectedId_ && row < files_.rowCount() && files_.row(row).id == *selectedId_;
}

std::optional<std::size_t> AttachmentListModel::positionOf(const std::optional<std::string>& id,
                                                           std::size_t hint) const {
  if (!id)
    return std::nullopt;
  if (hint < files_.rowCount() && files_.row(hint).id == *id)
    return hint;
  for (std::size_t i = 0; i < files_.rowCount(); ++i)
    if (files_.row(i).id == *id)
      return i;
  return std::nullopt;
}

const jmap::AttachmentInfo* AttachmentListModel::selected() const {
  const auto position = selectedPosition();
  return position ? &files_.row(*position) : nullptr;
}

void AttachmentListModel::select(std::size_t position) {
  const auto row = rowAt(static_cast<guint>(position));
  if (row >= files_.rowCount() || selectedId_ == files_.row(row).id)
    return;
  const auto before = selectedPosition();
  selectedId_ = files_.row(row).id;
  selectedHint_ = row;
  const auto first = std::min(before.value_or(row), row);
  const auto last = std::max(before.value_or(row), row);
  gtk_selection_model_selection_changed(native_.get(), static_cast<guint>(first),
                                        static_cast<guint>(last - first + 1));
}

} // namespace ondrel::ui
