#pragma once
// The in-page help: one XML file, read at process attach, whose elements hold Rich Text Format. The
// sheet's thread only.

#include <windows.h>
#include <msxml.h>

#include "AutoClasses.h"

// Releases the document and then, if it is owed, uninitialises COM when it goes.
struct HelpDocument {
    ScopedCom com;
    ScopedReference<IXMLDOMDocument> document;  // null when anything failed
};

// Initialises COM and reads Documentation\help.xml below the installation directory. A failure
// leaves `document` null and is silent.
void LoadHelpDocument(HelpDocument& help);

// Shows a topic of the library's help in a control, with the background of all help panes.
void ShowHelp(HWND richEdit, LPCWSTR key, LPCWSTR suffix = nullptr);
// Shows a sentence of the library's own in a help pane, which needs no help file.
void ShowHelpSentence(HWND richEdit, LPCWSTR sentence);

// Shows the first element named `key` (less a leading '*') followed by `suffix`, which may be null.
// `help` may be null. Without such an element the control is emptied.
void ShowHelpTopic(const HelpDocument* help, HWND richEdit, LPCWSTR key, LPCWSTR suffix);
// Shows `text` from its first '{' on as Rich Text Format; without one, nothing.
void SetRichEditText(HWND richEdit, LPCWSTR text);
