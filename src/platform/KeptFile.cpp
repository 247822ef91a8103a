#include "platform/KeptFile.h"

#include <utility>

namespace ondrel::platform {

KeptFile::Place KeptFile::inApplicationSupport(const Directories& directories, std::string name) {
  return [&directories, name = "/" + std::move(name)] {
    return directories.applicationSupport().transform([&](const auto& folder) { return folder + name; });
  };
}

KeptFile::KeptFile(FileStore& files, Place place, Words words, Content content)
    : files_(files), place_(std::move(place)), words_(std::move(words)), content_(std::move(content)) {
}

void KeptFile::load() {
  const auto file = path();
  if (!file)
    return;
  known_.reset();
  const auto version = files_.version(*file);
  const auto text = files_.read(*file);
  isUnusable_ = !text && !text.error().notFound;
  if (isUnusable_ && !words_.cantRead.empty())
    logger_.error("{}{}", words_.cantRead, text.error().description);
  if (!text)
    return;
  const auto taken = content_.take(*text);
  isUnusable_ = !taken;
  if (!taken)
    logger_.error("{}{}", words_.cantDecode, taken.error());
  // Replaced while it was read: which of the two contents we have, nobody knows.
  else if (files_.version(*file) == version)
    known_ = version;
}

void KeptFile::reload() {
  const auto file = path();
  const auto version = file ? files_.version(*file) : std::nullopt;
  if (!version || version == known_)
    return;
  const auto text = files_.read(*file);
  const auto taken = text ? content_.take(*text) : std::unexpected(text.error().description);
  if (taken) {
    isUnusable_ = false;
    if (files_.version(*file) == version)
      known_ = version;
  } else if (std::exchange(told_, version) != version) {
    logger_.notice("{}{}", words_.cantDecode, taken.error());
  }
}

void KeptFile::save() {
  soon_.stop();
  const auto file = path();
  const auto problem = file ? write(*file) : words_.hasNoFolderProblem;
  if (problem && problem != *problem_)
    logger_.error("{}", file ? words_.cantSave + *problem : words_.hasNoFolder);
  if (!problem)
    retry_.stop();
  else if (!*problem_)
    retry_ = async::Timer(firstRetry, [this] { retry(); });
  isUnsaved_ = problem.has_value();
  problem_.set(problem);
  content_.didSave(!problem);
}

std::optional<std::string> KeptFile::write(const std::string& file) {
  const auto make = [this](const std::expected<std::string, FileError>* other) {
    const bool isOurs = !other || (*other && content_.take(**other));
    return FileStore::Content{content_.text(), !isOurs};
  };
  const auto kept = files_.replaceShared(file, make, known_);
  if (!kept)
    return kept.error().description;
  isUnusable_ = false;
  if (*kept)
    logger_.notice("{}{}", words_.isKept, **kept);
  return std::nullopt;
}

void KeptFile::saveSoon() {
  isUnsaved_ = true;
  soon_ = async::Timer({}, [this] { save(); });
}

void KeptFile::saveIfUnsaved() {
  if (isUnsaved_)
    save();
}

void KeptFile::retry() {
  save();
  if (*problem_)
    retry_ = async::Timer(laterRetries, [this] { retry(); });
}

std::vector<std::string> KeptFile::keptFiles() const {
  const auto file = path();
  auto kept = file ? files_.keptAside(*file) : std::vector<std::string>();
  if (file && isUnusable_)
    kept.insert(kept.begin(), *file);
  return kept;
}

} // namespace ondrel::platform
