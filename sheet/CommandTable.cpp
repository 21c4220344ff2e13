#include "CommandTable.h"

#include <algorithm>
#include <cstdio>

#include "Controls.h"
#include "Drawing.h"
#include "PlacementDrawing.h"
#include "RegistryView.h"
#include "Seam.h"
#include "Transcript.h"
#include "LogView.h"

namespace sheet {

namespace {

using Words = std::vector<std::string>;

struct Command {
    const char* name;
    Arguments form;
    std::size_t count;
    void (*handler)(Session&, const Words&);
    const char* arguments;
    const char* help;
};

int ControlId(const std::string& word) {
    const auto number = ReadNumber(word, 0xFFFF);
    if (!number) throw Refusal{"\"" + word + "\" is no control id"};
    return static_cast<int>(*number);
}

std::uint64_t Milliseconds(const std::string& word) {
    // A year is more than any script waits.
    const auto number = ReadNumber(word, 366ULL * 24 * 3600 * 1000);
    if (!number) throw Refusal{"\"" + word + "\" is no number of milliseconds"};
    return *number;
}

int Button(const std::string& word) {
    const auto button = ButtonNamed(word);
    if (!button) throw Refusal{"\"" + word + "\" is no button: ok, cancel, yes or no"};
    return *button;
}

void DoTabs(Session& session, const Words&) {
    const Sheet* const sheet = session.SheetOrNull();
    if (sheet == nullptr) return;
    for (const Text& title : sheet->Tabs())
        Print(Field(title) + "\n");
}

void DoDevice(Session& session, const Words& words) {
    session.OpenDevice(FromUtf8(words[0]));
}

void DoOpen(Session& session, const Words& words) {
    Sheet& sheet = session.FreeSheet();
    const std::vector<Text> titles = sheet.Tabs();
    const auto title = std::find(titles.begin(), titles.end(), FromUtf8(words[0]));
    if (title == titles.end()) throw Refusal{"there is no tab \"" + words[0] + "\""};
    if (!sheet.Activate(static_cast<std::size_t>(title - titles.begin())))
        throw Refusal{"the active tab doesn't let go"};
}

void DoShow(Session& session, const Words&) {
    if (const Box* const box = session.OpenBox()) {
        Print(DrawMessageBox(*box));
        return;
    }
    const HWND window = session.ActiveWindow();
    const Sheet& sheet = session.CurrentSheet();
    Print(window == sheet.Page() ? DrawSheet(sheet) : DrawDialog(window));
}

void DoControls(Session& session, const Words&) {
    const Box* const box = session.OpenBox();
    Print(box != nullptr ? ListControls(*box) : ListControls(session.ActiveWindow()));
}

void DoPlaces(Session& session, const Words&) {
    Print(ListPlaces(session.ActiveWindow()));
}

void DoPress(Session& session, const Words& words) {
    const int id = ControlId(words[0]);
    if (session.OpenBox() != nullptr) {
        session.AnswerBox(id);
    } else {
        PressControl(session.ActiveWindow(), id);
    }
}

void DoType(Session& session, const Words& words) {
    TypeInto(session.ActiveWindow(), ControlId(words[0]), FromUtf8(words[1]));
}

void DoSelect(Session& session, const Words& words) {
    SelectEntry(session.ActiveWindow(), ControlId(words[0]), FromUtf8(words[1]));
}

void DoCheck(Session& session, const Words& words) {
    if (words[2] != "on" && words[2] != "off")
        throw Refusal{"\"" + words[2] + "\" is neither on nor off"};
    CheckRow(session.ActiveWindow(), ControlId(words[0]), FromUtf8(words[1]), words[2] == "on");
}

void DoRow(Session& session, const Words& words) {
    SelectRow(session.ActiveWindow(), ControlId(words[0]), FromUtf8(words[1]));
}

void DoAnswer(Session& session, const Words& words) {
    if (words[0] == "hold") {
        session.QueueAnswer(std::nullopt);
    } else {
        session.QueueAnswer(Button(words[0]));
    }
}

void DoBox(Session& session, const Words& words) {
    session.AnswerBox(Button(words[0]));
}

void DoSaveAs(Session& session, const Words& words) {
    if (words[0] == "cancel") {
        session.QueueFile(std::nullopt);
    } else {
        session.QueueFile(FromUtf8(words[0]));
    }
}

void DoWait(Session& session, const Words& words) {
    session.Wait(Milliseconds(words[0]));
}

void DoAt(Session& session, const Words& words);

void PressSheetButton(Session& session, int button) {
    session.FreeSheet().Press(button);
}

void DoOk(Session& session, const Words&) {
    PressSheetButton(session, PSBTN_OK);
}

void DoApply(Session& session, const Words&) {
    Sheet& sheet = session.FreeSheet();
    if (sheet.CanApply()) sheet.Press(PSBTN_APPLYNOW);
}

void DoCancel(Session& session, const Words&) {
    PressSheetButton(session, PSBTN_CANCEL);
}

void DoMerge(Session&, const Words& words) {
    MergeFile(words[0]);
}

void DoChanges(Session&, const Words& words) {
    if (!words[0].empty() && words[0] != "undo") throw Refusal{"usage: changes [undo]"};
    Print(RegistryChanges(words[0].empty() ? Changes::Made : Changes::Undone));
}

void DoPlacement(Session& session, const Words&) {
    const Sheet* const sheet = session.SheetOrNull();
    if (sheet == nullptr) throw Refusal{"no sheet is open"};
    Print(DrawPlacement(sheet->InstanceId()));
}

void DoReg(Session&, const Words& words) {
    Print(DescribeKey(FromUtf8(words[0])));
}

void DoLog(Session&, const Words&) {
    Print(ReadTuningLog());
}

void DoOutput(Session&, const Words&) {
    Print(LibraryOutput());
}

void DoHelp(Session&, const Words&);

const Command kCommands[] = {
    {"tabs", Arguments::None, 0, DoTabs, "", "the tabs, one a line; nothing without any"},
    {"open", Arguments::Rest, 1, DoOpen, "TITLE", "make a tab active"},
    {"show", Arguments::None, 0, DoShow, "", "draw the tab, dialog or message box that is up"},
    {"controls", Arguments::None, 0, DoControls, "", "list its controls for a program to read"},
    {"places", Arguments::None, 0, DoPlaces, "", "list where its controls stand, in dialog units"},
    {"press", Arguments::Words, 1, DoPress, "ID", "click a button, radio button or check box"},
    {"type", Arguments::Rest, 2, DoType, "ID TEXT", "fill an edit"},
    {"select", Arguments::Rest, 2, DoSelect, "ID TEXT", "pick an entry of a list"},
    {"check", Arguments::RestAndWord, 3, DoCheck, "ID ROW on|off", "set a row's check box"},
    {"row", Arguments::Rest, 2, DoRow, "ID ROW", "select a row of a list view"},
    {"answer", Arguments::Words, 1, DoAnswer, "BUTTON",
     "queue an answer for the next message box: ok, cancel, yes, no; hold: leave it up"},
    {"box", Arguments::Words, 1, DoBox, "BUTTON", "press a button of the box that was left up"},
    {"save-as", Arguments::Rest, 1, DoSaveAs, "PATH",
     "queue the file that the next file dialog gives; cancel: none"},
    {"wait", Arguments::Words, 1, DoWait, "MS", "let the clock run"},
    {"at", Arguments::Rest, 2, DoAt, "MS COMMAND",
     "give that command when the machine has run for so long, whatever is up then"},
    {"ok", Arguments::None, 0, DoOk, "", "press the sheet's OK"},
    {"apply", Arguments::None, 0, DoApply, "", "press the sheet's Apply, if it is enabled"},
    {"cancel", Arguments::None, 0, DoCancel, "", "press the sheet's Cancel"},
    {"device", Arguments::Rest, 1, DoDevice, "INSTANCE-ID",
     "open a further sheet, or go back to one that is open"},
    {"changes", Arguments::Rest, 1, DoChanges, "[undo]",
     "what the session has changed in the registry, as a file to merge; undo: its way back"},
    {"placement", Arguments::None, 0, DoPlacement, "",
     "draw the processors, and which of them do the work of the card's ports"},
    {"merge", Arguments::Rest, 1, DoMerge, "FILE", "import a machine file, as regedit would"},
    {"reg", Arguments::Rest, 1, DoReg, "PATH",
     "a key below HKEY_LOCAL_MACHINE, with what is in it"},
    {"log", Arguments::None, 0, DoLog, "", "the tuning log; nothing as long as there is none"},
    {"output", Arguments::None, 0, DoOutput, "", "the diagnostics that the library has written"},
    {"help", Arguments::None, 0, DoHelp, "", "this list; a line that begins with # is a comment"},
};

void DoHelp(Session&, const Words&) {
    for (const Command& command : kCommands) {
        std::string usage = command.name;
        if (*command.arguments != '\0') usage += std::string(" ") + command.arguments;
        usage.resize(std::max<std::size_t>(usage.size(), 21), ' ');
        Print("  " + usage + " " + command.help + "\n");
    }
}

const Command& Find(std::string_view name) {
    for (const Command& command : kCommands) {
        if (name == command.name) return command;
    }
    throw Refusal{"there is no command \"" + std::string(name) + "\" (try help)"};
}

void DoAt(Session& session, const Words& words) {
    const std::uint64_t time = Milliseconds(words[0]);
    Find(SplitFirst(words[1]).word);
    session.At(time, words[1]);
}

}  // namespace

void Execute(Session& session, const std::string& line) {
    const FirstWord first = SplitFirst(line);
    const Command& command = Find(first.word);
    const std::optional<Words> words = SplitArguments(first.rest, command.form, command.count);
    if (!words) {
        std::string usage = command.name;
        if (*command.arguments != '\0') usage += std::string(" ") + command.arguments;
        throw Refusal{"usage: " + usage};
    }
    command.handler(session, *words);
}

}  // namespace sheet
