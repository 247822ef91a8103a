#include "app/SessionStore.h"

#include "base/Translation.h"

#include <utility>

namespace ondrel::app {

SessionStore::SessionStore(platform::Directories& directories, platform::FileStore& files,
                           std::string_view fileName)
    : file_(files, platform::KeptFile::inApplicationSupport(directories, std::string(fileName)),
            {.cantDecode = "SessionStore: decode failed: ",
             .cantSave = "SessionStore: save failed: ",
             .isKept = "SessionStore: the unreadable session is kept as ",
             .hasNoFolder = "SessionStore: failed to resolve Application Support URL",
             .hasNoFolderProblem = base::tr("there is no folder for the session")},
            {.take = [this](const std::string& text) -> std::expected<void, std::string> {
               auto session = PersistedSession::decode(text);
               if (!session)
                 return std::unexpected(std::move(session.error()));
               loaded_ = std::move(*session);
               return {};
             },
             .text = [this] { return content_; },
             .didSave =
                 [this](bool isSaved) {
                   loaded_.reset();
                   if (isSaved)
                     content_.clear();
                 }}) {
}

void SessionStore::save(const PersistedSession& session) {
  content_ = session.encoded();
  file_.save();
}

std::optional<PersistedSession> SessionStore::load() {
  loaded_.reset();
  file_.load();
  return std::exchange(loaded_, std::nullopt);
}

} // namespace ondrel::app
