#pragma once
// The writing of a file that is whole at any time.

#include <string>
#include <string_view>

namespace sheet {

// Gives a file these bytes in one step: whoever opens it, also after a failure or a kill at any
// time, finds either the old content or the new one, on the disk. The bytes go to another file of
// the same folder first. An existing file keeps its mode and, where the user may give it, its
// owner; a symbolic link stays and the file that it names is replaced. What can't be replaced (a
// pipe, a device) is written to. Refusal: an error of the system; the file is as it was, and
// nothing is left beside it.
void ReplaceFileContent(const std::string& path, std::string_view bytes);

}  // namespace sheet
