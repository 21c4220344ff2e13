#pragma once
// The texts of the message table and the boxes built on them. Any thread. `arguments` points to the
// texts of %1, %2, ... and may be null where the message takes none. A counted string that can't be
// allocated ends the process through ThrowHresult.

#include <windows.h>
#include <initializer_list>

#include "AutoClasses.h"

// Copies the string of that id. False, and `text` null, when it doesn't exist or is empty.
bool LoadResourceString(HINSTANCE module, UINT id, ScopedBstr& text);
// Replaces `text` by the formatted message of at most 511 characters. False leaves it as it was.
bool FormatResourceMessage(UINT id, ScopedBstr& text, const LPCWSTR* arguments);
// A box "Error" with the stop icon, over the foreground window.
void ShowErrorMessage(UINT id, const LPCWSTR* arguments);
// The same with the system's text of the error as %1, or its number where it has no text.
void ShowSystemErrorMessage(UINT id, DWORD error);
// The same with "0x" and the code in upper-case hexadecimal as %1.
void ShowHexErrorMessage(UINT id, DWORD code);
// A box of that owner, caption and style with the message. Gives the button pressed; 0 when the
// message can't be shown. arguments: the texts of %1, %2, ...
int ShowMessage(HWND owner, UINT id, LPCWSTR caption, UINT style,
                std::initializer_list<LPCWSTR> arguments = {});
// A box with the message `captionId` as caption (empty when that fails). Gives the button pressed.
int ShowCaptionedMessage(HWND owner, LPCWSTR text, UINT captionId, UINT style);

// Raises a non-continuable exception: 0xC0000017 for E_OUTOFMEMORY, else 0xC000001D.
[[noreturn]] void ThrowHresult(HRESULT result);
// A counted string of that text; ends the process when memory runs out.
ScopedBstr AllocateText(LPCWSTR text);
// Appends `length` characters. 0, 0x80070057 for a negative length, 0x80070216 when the length
// overflows, 0x8007000E when memory runs out; a failure leaves `text` as it was.
HRESULT AppendText(ScopedBstr& text, LPCWSTR more, int length);
// Equal, with case. A null is an empty string.
bool EqualText(BSTR a, BSTR b);
