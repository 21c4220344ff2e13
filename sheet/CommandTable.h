#pragma once
// The commands of a script.

#include <string>

#include "Session.h"

namespace sheet {

// Does one command. Refusal: there is no such command, its arguments don't fit, or it can't be done
// as things stand; then nothing has happened.
void Execute(Session& session, const std::string& line);

}  // namespace sheet
