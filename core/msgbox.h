// Message boxes with a title, a text and an OK button. Every box of the program
// goes through MsgBox, so a test can take the messages without a modal loop.
#pragma once

#include <QString>

#include <functional>

namespace tarnic {

void MsgBox(const QString& text, const QString& title);

// The orderly end of a save whose file could not be written: the user is told
// which file and why; nothing else changes.
void ReportUnwrittenFile(const QString& path, const QString& reason);

// While a hook is set, MsgBox hands the message to it instead of showing a box.
using MsgBoxHook = std::function<void(const QString& text, const QString& title)>;
void setMsgBoxHook(MsgBoxHook hook);

} // namespace tarnic
