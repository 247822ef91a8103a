#include "integrations/UpdateTexts.h"

#include "base/Text.h"
#include "base/Translation.h"

namespace ondrel::integrations {

std::string updateProblem(const platform::UpdateFault& fault, UpdateAttempt attempt) {
  using Kind = platform::UpdateFault::Kind;
  switch (fault.kind) {
  case Kind::noNetwork:
    return base::tr("This computer is offline. Try again when it has a network.");
  case Kind::unreachable:
    return attempt == UpdateAttempt::looking
               ? base::tr(
                     "A package source of this computer can’t be reached, so nobody knows whether there is a "
                     "newer version. Try again later.")
               : base::tr("The package source of the new version can’t be reached. Try again later.");
  case Kind::untrusted:
    return base::tr(
        "A package source isn’t signed by anybody whom this computer trusts, so nothing is taken from it. "
        "Ask whoever looks after this computer.");
  case Kind::refused:
    return attempt == UpdateAttempt::looking ? base::tr("Reading the package sources anew was not allowed.")
                                             : base::tr("It was not allowed: no right password was given, or "
                                                        "your account may not install software.");
  case Kind::busy:
    return base::tr("Another program is installing software. Try again when it has finished.");
  case Kind::gone:
    return base::tr("This version isn’t offered any more. Check for updates again.");
  case Kind::conflicts:
    return base::tr(
        "The new version would remove or set back other packages. Install it with the package manager of "
        "this computer.");
  case Kind::noSpace:
    return base::tr("There is not enough space on the disk.");
  case Kind::noService:
    return base::tr("The package service of this computer doesn’t answer. Try again later.");
  case Kind::cancelled:
    return base::tr("It was called off.");
  case Kind::other:
    break;
  }
  return base::trFormat("The package service says: {}", base::shortDisplayLine(fault.details));
}

std::string updateHeadline(const UpdateState& state, const platform::ProgramInfo& program) {
  using Phase = UpdateState::Phase;
  const auto& name = program.displayName;
  const auto current = name + " " + program.shortVersion;
  const auto next = name + " " + state.update.version;
  const bool isKnown = !state.update.version.empty();
  switch (state.phase) {
  case Phase::idle:
    return base::trFormat("This is {}", current);
  case Phase::checking:
    return base::tr("Checking for updates…");
  case Phase::upToDate:
    return base::trFormat("{} is the newest version", current);
  case Phase::available:
    return base::trFormat("{} is available", next);
  case Phase::downloading:
    return base::trFormat("Downloading {}…", next);
  case Phase::ready:
    return base::trFormat("{} is ready to be installed", next);
  case Phase::installing:
    return base::trFormat("Installing {}…", next);
  case Phase::needsRestart:
    return isKnown ? base::trFormat("{} is installed", next)
                   : base::trFormat("A new version of {} is installed", name);
  case Phase::failed:
    return isKnown ? base::trFormat("{} could not be installed", next)
                   : base::tr("Updates could not be looked for");
  }
  return {};
}

std::string updateRemark(const UpdateState& state) {
  using Phase = UpdateState::Phase;
  using Step = platform::UpdateProgress::Step;
  if (state.phase == Phase::needsRestart)
    return base::tr("Restart to use it. Your windows and tabs come back.");
  if (state.phase != Phase::downloading && state.phase != Phase::installing)
    return state.problem;
  switch (state.progress.step) {
  case Step::askingUser:
    return base::tr("Waiting for permission…");
  case Step::waiting:
    return base::tr("Waiting for the package service…");
  case Step::downloading:
  case Step::installing:
    break;
  }
  return {};
}

std::string whoUpdates(platform::UpdateSource source, const std::string& displayName) {
  switch (source) {
  case platform::UpdateSource::sandbox:
    return base::tr(
        "Whoever gave you this Flatpak updates it: look into your software center, or use “flatpak "
        "update”.");
  case platform::UpdateSource::elsewhere:
    return base::tr("This copy was not installed as a package: update it where you got it from.");
  case platform::UpdateSource::none:
    return base::trFormat(
        "This computer has no package service (PackageKit): its package manager updates {}.", displayName);
  case platform::UpdateSource::packageService:
    break;
  }
  return {};
}

} // namespace ondrel::integrations
