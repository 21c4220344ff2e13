#pragma once
// A person at the device manager who follows a script: open sheets, message boxes, and the command
// that comes next. One thread.

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "DeviceManager.h"
#include "MessageBoxes.h"
#include "Script.h"
#include "Transcript.h"

namespace sheet {

class Session {
  public:
    // Does one line of the script for a session; throws Refusal.
    using Executor = std::function<void(Session&, const std::string& line)>;

    // The lines that a person's beginning of one may become.
    using Completer =
        std::function<std::vector<std::string>(Session&, const std::string& beginning)>;

    // script: borrowed. complete: for a script that a person types.
    Session(Script& script, Executor execute, Completer complete = {});

    // Opens the sheet of the named device, or of the first one, and follows the script to its end:
    // then a box that is up gets its default, the sheets are cancelled. Gives the exit code: 0, or
    // 2 when something was refused. Refusal: the named device isn't there; nothing has happened.
    int Run(const std::optional<Text>& instanceId);

    // What the machine's user is asked; without a queued answer a person at a terminal is asked in
    // turn. The id of the button, or 0 to leave the box up.
    int OnMessageBox(const Box& box);
    // The path, or nothing for Cancel.
    std::optional<Text> OnFileDialog();
    // Does the next command; false when there is none.
    bool OnIdle();

    // For the commands. The current sheet; refused when there is none or it has no tabs.
    Sheet& CurrentSheet();
    // The sheet itself, when no box or dialog stands in front of it; else refused.
    Sheet& FreeSheet();
    // The same, but null instead of a refusal.
    Sheet* SheetOrNull() const { return m_sheets.Current(); }
    // The open dialog or else the active tab; refused without one.
    HWND ActiveWindow();
    // The box that is up, the one shown last; null when there is none.
    const Box* OpenBox() const { return m_boxes.empty() ? nullptr : &m_boxes.back(); }
    // Presses a button of that box; refused when it has no such button.
    void AnswerBox(int button);
    // Presses the button of that label, of the open box or of the active window; refused without
    // one.
    void PressButton(const Text& label);
    std::vector<Text> PressableLabels();
    void QueueAnswer(std::optional<int> button) { m_answers.push_back(button); }
    void QueueFile(std::optional<Text> path) { m_files.push_back(std::move(path)); }
    DeviceManager& Devices() { return m_devices; }
    void OpenDevice(const Text& instanceId);
    // A command has been refused, and the session ends for that.
    bool HasRefused() const { return m_exitCode != 0; }
    void Wait(std::uint64_t milliseconds);
    void At(std::uint64_t time, const std::string& line);
    // As at the end of the script.
    void End() { m_isEnding = true; }

  private:
    struct NoBox : Refusal {};
    struct Planned {
        std::string line;
        std::string place;
    };

    bool HasPerson() const { return m_script.IsInteractive() && !m_isEnding; }
    void TellDevices();
    void AddSheet(const Device& device);
    std::optional<int> AnswerTo(const Box& box);
    std::optional<int> AskAnswer(const Box& box);
    int AnswerUnasked(UINT style) const;
    void Do(const std::string& line, const std::string& place);
    void DoNextLine();
    void Refuse(const std::string& reason, const std::string& place);
    bool DoWhatIsDue();
    bool Close();

    Script& m_script;
    Executor m_execute;
    Completer m_complete;
    DeviceManager m_devices;
    Sheets m_sheets;
    std::vector<Box> m_boxes;                  // those that were left up
    std::deque<std::optional<int>> m_answers;  // nothing: leave the box up
    std::deque<std::optional<Text>> m_files;   // nothing: cancel
    std::multimap<std::uint64_t, Planned> m_plan;
    std::optional<Planned> m_untilBox;  // a command that waits for a box
    int m_looksForBox = 0;
    std::uint64_t m_waitsUntil = 0;
    bool m_isEnding = false;
    int m_closingSteps = 0;
    int m_exitCode = 0;
};

}  // namespace sheet
