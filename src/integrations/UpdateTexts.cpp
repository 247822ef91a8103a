#include "integrations/UpdateTexts.h"

#include "base/Text.h"

namespace ondrel::integrations {

std::string updateProblem(const platform::UpdateFault& fault, UpdateAttempt attempt) {
  using Kind = platform::UpdateFault::Kind;
  switch (fault.kind) {
  case Kind::noNetwork:
    return "This computer is offline. Try again when it has a network.";
  case Kind::unreachable:
    return attempt == UpdateAttempt::looking
               ? "A package source of this computer can’t be reached, so nobody knows whether there is a "
                 "newer version. Try again later."
               : "The package source of the new version can’t be reached. Try again later.";
  case Kind::untrusted:
    return "A package source isn’t signed by anybody whom this computer trusts, so nothing is taken from it. "
           "Ask whoever looks after this computer.";
  case Kind::refused:
    return attempt == UpdateAttempt::looking
               ? "Reading the package sources anew was not allowed."
               : "It was not allowed: no right password was given, or your account may not install software.";
  case Kind::busy:
    return "Another program is installing software. Try again when it has finished.";
  case Kind::gone:
    return "This version isn’t offered any more. Check for updates again.";
  case Kind::conflicts:
    return "The new version would remove or set back other packages. Install it with the package manager of "
           "this computer.";
  case Kind::noSpace:
    return "There is not enough space on the disk.";
  case Kind::noService:
    return "The package service of this computer doesn’t answer. Try again later.";
  case Kind::cancelled:
    return "It was called off.";
  case Kind::other:
    break;
  }
  return "The package service says: " + base::shortDisplayLine(fault.details);
}

std::string updateHeadline(const UpdateState& state, const platform::ProgramInfo& program) {
  using Phase = UpdateState::Phase;
  const auto& name = program.displayName;
  const auto next = name + " " + state.update.version;
  switch (state.phase) {
  case Phase::idle:
    return "This is " + name + " " + program.shortVersion;
  case Phase::checking:
    return "Checking for updates…";
  case Phase::upToDate:
    return name + " " + program.shortVersion + " is the newest version";
  case Phase::available:
    return next + " is available";
  case Phase::downloading:
    return "Downloading " + next + "…";
  case Phase::ready:
    return next + " is ready to be installed";
  case Phase::installing:
    return "Installing " + next + "…";
  case Phase::needsRestart:
    return (state.update.version.empty() ? "A new version of " + name : next) + " is installed";
  case Phase::failed:
    return state.update.version.empty() ? "Updates could not be looked for"
                                        : next + " could not be installed";
  }
  return {};
}

std::string updateRemark(const UpdateState& state) {
  using Phase = UpdateState::Phase;
  using Step = platform::UpdateProgress::Step;
  if (state.phase == Phase::needsRestart)
    return "Restart to use it. Your windows and tabs come back.";
  if (state.phase != Phase::downloading && state.phase != Phase::installing)
    return state.problem;
  switch (state.progress.step) {
  case Step::askingUser:
    return "Waiting for permission…";
  case Step::waiting:
    return "Waiting for the package service…";
  case Step::downloading:
  case Step::installing:
    break;
  }
  return {};
}

std::string whoUpdates(platform::UpdateSource source, const std::string& displayName) {
  switch (source) {
  case platform::UpdateSource::sandbox:
    return "Whoever gave you this Flatpak updates it: look into your software center, or use “flatpak "
           "update”.";
  case platform::UpdateSource::elsewhere:
    return "This copy was not installed as a package: update it where you got it from.";
  case platform::UpdateSource::none:
    return "This computer has no package service (PackageKit): its package manager updates " + displayName +
           ".";
  case platform::UpdateSource::packageService:
    break;
  }
  return {};
}

} // namespace ondrel::integrations
