#pragma once
// The commands of a script.

#include <string>
#include <vector>

#include "Session.h"

namespace sheet {

// Does one command. Refusal: there is no such command, its arguments don't fit, or it can't be done
// as things stand; then nothing has happened.
void Execute(Session& session, const std::string& line);

// The lines that begin with that one and name a command, or after a command what it can be done
// with: tab titles, labels, devices, buttons.
std::vector<std::string> Complete(Session& session, const std::string& line);

}  // namespace sheet
