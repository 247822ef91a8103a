#include "app/SessionStore.h"

#include "platform/FileStore.h"

namespace ondrel::app {

SessionStore::SessionStore(platform::Directories& directories, platform::FileStore& files,
                           std::string_view fileName)
    : fileName_(fileName), directories_(directories), files_(files), saving_([this] { return write(); }) {
}

std::optional<std::string> SessionStore::path() const {
  auto folder = directories_.applicationSupport();
  if (!folder)
    return std::nullopt;
  return *folder + "/" + fileName_;
}

void SessionStore::save(const PersistedSession& session) {
  if (!path()) {
    logger_.error("SessionStore: failed to resolve Application Support URL");
    return;
  }
  content_ = session.encoded();
  if (const auto saved = saving_.run(); !saved)
    logger_.error("SessionStore: save failed: {}", saved.error());
}

platform::RetriedSave::Result SessionStore::write() {
  const auto file = path();
  if (!file)
    return std::unexpected("there is no folder for the session");
  if (fileIsDamaged_) {
    const auto kept = files_.keepAside(*file);
    if (!kept && !kept.error().notFound)
      return std::unexpected("the unreadable session can't be kept: " + kept.error().description);
    if (kept)
      logger_.notice("SessionStore: the unreadable session is kept as {}", *kept);
    fileIsDamaged_ = false;
  }
  if (const auto written = files_.writeAtomically(*file, content_); !written)
    return std::unexpected(written.error().description);
  content_.clear();
  return {};
}

std::optional<PersistedSession> SessionStore::load() {
  const auto file = path();
  if (!file)
    return std::nullopt;
  const auto text = files_.read(*file);
  if (!text) {
    fileIsDamaged_ = !text.error().notFound;
    return std::nullopt;
  }
  auto session = PersistedSession::decode(*text);
  if (!session) {
    logger_.error("SessionStore: decode failed: {}", session.error());
    fileIsDamaged_ = true;
    return std::nullopt;
  }
  return std::move(*session);
}

} // namespace ondrel::app
