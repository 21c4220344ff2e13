#include "CommandTable.h"

#include <algorithm>
#include <cstdio>

#include "Controls.h"
#include "Drawing.h"
#include "Network.h"
#include "PlacementDrawing.h"
#include "RegistryView.h"
#include "Seam.h"
#include "Transcript.h"
#include "LogView.h"

namespace sheet {

namespace {

using Words = std::vector<std::string>;

using Choices = std::vector<std::string> (*)(Session&);

struct Command {
    const char* name;
    Arguments form;
    std::size_t count;
    void (*handler)(Session&, const Words&);
    const char* arguments;  // their names; one that may be left out, the last, in brackets
    const char* help;
    Choices choices = nullptr;  // what its argument can be, where a person is spared the typing
};

std::string Usage(const Command& command) {
    return command.name + std::string(*command.arguments == '\0' ? "" : " ") + command.arguments;
}

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

void DoDevices(Session& session, const Words&) {
    Print(ListDevices(session.Devices().WithTabs()));
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

constexpr struct {
    const char* name;
    WPARAM code;
} kKeys[] = {{"enter", VK_RETURN}, {"escape", VK_ESCAPE}};

// The text of a label in double quotes.
std::string Unquoted(const std::string& word) {
    if (word.size() < 2 || !word.ends_with('"'))
        throw Refusal{word + " has no closing double quote"};
    return word.substr(1, word.size() - 2);
}

void DoPress(Session& session, const Words& words) {
    for (const auto& key : kKeys) {
        if (words[0] != key.name) continue;
        if (session.OpenBox() != nullptr) throw Refusal{"a message box is up"};
        PressKey(session.ActiveWindow(), key.code);
        return;
    }
    if (words[0].starts_with('"')) {
        session.PressButton(FromUtf8(Unquoted(words[0])));
        return;
    }
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
    if (!words[0].empty() && words[0] != "undo") throw Refusal{"\"" + words[0] + "\" is not undo"};
    Print(RegistryChanges(words[0].empty() ? Changes::Made : Changes::Undone));
}

void DoPlacement(Session& session, const Words&) {
    const Sheet* const sheet = session.SheetOrNull();
    if (sheet == nullptr) throw Refusal{"no sheet is open"};
    Print(DrawPlacement(sheet->InstanceId()));
}

void DoNetwork(Session&, const Words& words) {
    if (!words[0].empty() && words[0] != "list") throw Refusal{"\"" + words[0] + "\" is not list"};
    const Network network = ReadNetwork();
    Print(words[0].empty() ? DrawNetwork(network) : ListNetwork(network));
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

void DoQuit(Session& session, const Words&) {
    session.End();
}

void DoHelp(Session&, const Words&);

std::vector<std::string> TabChoices(Session& session) {
    const Sheet* const sheet = session.SheetOrNull();
    std::vector<std::string> titles;
    if (sheet == nullptr) return titles;
    for (const Text& title : sheet->Tabs())
        titles.push_back(ToUtf8(title));
    return titles;
}

std::vector<std::string> PressChoices(Session& session) {
    std::vector<std::string> labels;
    for (const auto& key : kKeys)
        labels.emplace_back(key.name);
    for (const Text& label : session.PressableLabels())
        labels.push_back("\"" + ToUtf8(label) + "\"");
    return labels;
}

std::vector<std::string> DeviceChoices(Session& session) {
    std::vector<std::string> ids;
    for (const Device& device : session.Devices().All())
        ids.push_back(ToUtf8(device.instanceId));
    return ids;
}

std::vector<std::string> AnswerChoices(Session&) {
    return {"ok", "cancel", "yes", "no", "hold"};
}

std::vector<std::string> BoxChoices(Session& session) {
    return session.OpenBox() != nullptr ? ButtonNames(*session.OpenBox())
                                        : std::vector<std::string>();
}

const Command kCommands[] = {
    {"tabs", Arguments::None, 0, DoTabs, "", "the tabs, one a line; nothing without any"},
    {"open", Arguments::Rest, 1, DoOpen, "TITLE", "make a tab active", TabChoices},
    {"show", Arguments::None, 0, DoShow, "", "draw the tab, dialog or message box that is up"},
    {"controls", Arguments::None, 0, DoControls, "", "list its controls for a program to read"},
    {"places", Arguments::None, 0, DoPlaces, "", "list where its controls stand, in dialog units"},
    {"press", Arguments::WordOrLabel, 1, DoPress, "ID|\"LABEL\"|KEY",
     "click a button, radio button or check box; or press a key: enter, escape", PressChoices},
    {"type", Arguments::Rest, 2, DoType, "ID [TEXT]", "fill an edit; without a text: empty it"},
    {"select", Arguments::Rest, 2, DoSelect, "ID TEXT", "pick an entry of a list"},
    {"check", Arguments::RestAndWord, 3, DoCheck, "ID ROW on|off", "set a row's check box"},
    {"row", Arguments::Rest, 2, DoRow, "ID ROW", "select a row of a list view"},
    {"answer", Arguments::Words, 1, DoAnswer, "BUTTON",
     "queue an answer for the next message box: ok, cancel, yes, no; hold: leave it up",
     AnswerChoices},
    {"box", Arguments::Words, 1, DoBox, "BUTTON", "press a button of the box that was left up",
     BoxChoices},
    {"save-as", Arguments::Rest, 1, DoSaveAs, "PATH",
     "queue the file that the next file dialog gives; cancel: none"},
    {"wait", Arguments::Words, 1, DoWait, "MS", "let the clock run"},
    {"at", Arguments::Rest, 2, DoAt, "MS COMMAND",
     "give that command when the machine has run for so long, whatever is up then"},
    {"ok", Arguments::None, 0, DoOk, "", "press the sheet's OK"},
    {"apply", Arguments::None, 0, DoApply, "", "press the sheet's Apply, if it is enabled"},
    {"cancel", Arguments::None, 0, DoCancel, "", "press the sheet's Cancel"},
    {"device", Arguments::Rest, 1, DoDevice, "INSTANCE-ID",
     "open a further sheet, or go back to one that is open", DeviceChoices},
    {"devices", Arguments::None, 0, DoDevices, "", "list the devices that have tabs"},
    {"changes", Arguments::Rest, 1, DoChanges, "[undo]",
     "what the session has changed in the registry, as a file to merge; undo: its way back"},
    {"network", Arguments::Rest, 1, DoNetwork, "[list]",
     "draw the adapters with their VLANs and teams; list: the same for a program to read"},
    {"placement", Arguments::None, 0, DoPlacement, "",
     "draw the processors, and which of them do the work of the card's ports"},
    {"merge", Arguments::Rest, 1, DoMerge, "FILE", "import a machine file, as regedit would"},
    {"reg", Arguments::Rest, 1, DoReg, "PATH",
     "a key below HKEY_LOCAL_MACHINE, with what is in it"},
    {"log", Arguments::None, 0, DoLog, "", "the tuning log; nothing as long as there is none"},
    {"output", Arguments::None, 0, DoOutput, "", "the diagnostics that the library has written"},
    {"help", Arguments::None, 0, DoHelp, "", "this list; a line that begins with # is a comment"},
    {"quit", Arguments::None, 0, DoQuit, "", "end the session"},
};

void DoHelp(Session&, const Words&) {
    for (const Command& command : kCommands) {
        std::string usage = Usage(command);
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

// The name of the first argument that is missing; empty when none is.
std::string MissingArgument(const Command& command, std::size_t given) {
    std::string_view names = command.arguments;
    for (; given > 0; --given)
        names = SplitFirst(names).rest;
    const std::string_view name = SplitFirst(names).word;
    return std::string(name.starts_with('[') ? "" : name);
}

Words ReadArguments(const Command& command, std::string_view text) {
    SplitLine line = SplitArguments(text, command.form, command.count);
    const std::string usage = "usage: " + Usage(command);
    const std::string missing = MissingArgument(command, line.arguments.size());
    if (!missing.empty()) throw Refusal{usage + " (" + missing + " is missing)"};
    if (!line.excess.empty())
        throw Refusal{usage + " (\"" + std::string(line.excess) + "\" is too much)"};
    line.arguments.resize(command.count);
    return line.arguments;
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
    command.handler(session, ReadArguments(command, first.rest));
}

std::vector<std::string> Complete(Session& session, const std::string& line) {
    std::vector<std::string> candidates;
    const FirstWord first = SplitFirst(line);
    for (const Command& command : kCommands) {
        const std::string start = std::string(command.name) + " ";
        if (line.starts_with(start) && command.choices != nullptr) {
            for (const std::string& choice : command.choices(session))
                candidates.push_back(start + choice);
        } else if (first.word == line) {
            candidates.push_back(*command.arguments == '\0' ? command.name : start);
        }
    }
    // What can't be printed as it is can't be typed either.
    std::erase_if(candidates, [&](const std::string& candidate) {
        return !candidate.starts_with(line) || ToUtf8(Printable(FromUtf8(candidate))) != candidate;
    });
    return candidates;
}

}  // namespace sheet
