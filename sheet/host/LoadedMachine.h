#pragma once
// The machine that the host's program runs on.

#include <string>

#include "../Session.h"
#include "Arguments.h"
#include "Machine.h"
#include "User.h"

namespace sheet {

// The file's bytes. Refusal: it can't be read.
std::string ReadWholeFile(const std::string& path);

// Fills a fresh machine as the options say: registry, drive C:, modules, trace. Refusal: the
// machine file or the folder can't be read.
void Load(platform::Machine& machine, const Options& options);
// Writes the machine's registry as a machine file, in one step. Refusal: the file can't be written,
// and is as it was.
void Save(platform::Machine& machine, const std::string& path);

// Lets a session answer as the machine's user, as long as it lives. Borrows both.
class SessionUser : public platform::User {
  public:
    SessionUser(platform::Machine& machine, Session& session);
    ~SessionUser() override;
    SessionUser(const SessionUser&) = delete;
    SessionUser& operator=(const SessionUser&) = delete;

    int OnMessageBox(const platform::MessageBoxRequest& box) override;
    std::optional<std::u16string> OnFileDialog(const platform::FileDialogRequest& dialog) override;
    bool OnIdle() override;

  private:
    platform::Machine& m_machine;
    Session& m_session;
};

}  // namespace sheet
