#pragma once

#include "integrations/UpdateState.h"
#include "platform/ProgramInfo.h"
#include "platform/SoftwareUpdater.h"

#include <string>

namespace ondrel::integrations {

enum class UpdateAttempt { looking, downloading, installing };

// What went wrong and what to do, in a sentence or two.
std::string updateProblem(const platform::UpdateFault& fault, UpdateAttempt attempt);

// How far it is, in a few words, and what else there is to say of it: what went wrong, or what it waits for.
std::string updateHeadline(const UpdateState& state, const platform::ProgramInfo& program);
std::string updateRemark(const UpdateState& state);

// Who updates the program, where it isn't the package service.
std::string whoUpdates(platform::UpdateSource source, const std::string& displayName);

} // namespace ondrel::integrations
