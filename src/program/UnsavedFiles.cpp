#include "program/UnsavedFiles.h"

#include "base/Translation.h"
#include "platform/Application.h"
#include "platform/KeptFile.h"
#include "platform/Panels.h"

#include <algorithm>
#include <utility>

namespace ondrel::program {

UnsavedFiles::UnsavedFiles(std::vector<std::reference_wrapper<platform::KeptFile>> files,
                           platform::Application& application, platform::Panels& panels)
    : files_(std::move(files)), application_(application), panels_(panels) {
  for (const auto file : files_)
    subscriptions_.push_back(file.get().problem().observe([this] { look(); }));
  subscriptions_.push_back(application_.aboutToQuit.subscribe([this] { saveAtTheEnd(); }));
  look();
}

void UnsavedFiles::look() {
  const auto failed =
      std::ranges::find_if(files_, [](platform::KeptFile& file) { return file.problem()->has_value(); });
  const bool isTold = std::exchange(told_, failed != files_.end());
  if (told_ && !isTold)
    scope_.spawn(tell(**failed->get().problem()));
  else if (isTold && !told_)
    logger_.notice("What couldn't be saved is saved now");
}

void UnsavedFiles::saveAtTheEnd() {
  for (platform::KeptFile& file : files_) {
    file.saveIfUnsaved();
    if (const auto& problem = *file.problem())
      logger_.error("Lost with the end of the program: {}", *problem);
  }
}

async::Task<void> UnsavedFiles::tell(std::string problem) {
  platform::Alert alert{
      base::tr("Your Changes Can't Be Saved"),
      problem + "\n\n" +
          base::tr("They are kept until you quit, and saving is tried again every half minute. "
                   "Make room on the disk before you quit, or see that the file can be written."),
      platform::AlertStyle::warning,
      {base::tr("OK")}};
  co_await panels_.runAlert(std::move(alert), application_.frontWindow());
}

} // namespace ondrel::program
