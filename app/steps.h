// Drives the workbench as a user does: opens a file from the main window's
// browser and performs named steps, each the clicks of one action. The picture
// tool and the batch tool stand on it, so they reach every window by the same
// handlers as the user's clicks.
#pragma once

#include <QString>

class QFileInfo;

namespace tarnic {

class Form;
class Workbench;

// Moves the main window's browser to the file's folder, selects the file and
// double-clicks it, as the user opens a file. False when the browser does not
// list it; the intake's own messages are the main window's business.
bool OpenFromBrowser(Workbench& workbench, const QFileInfo& file);

// Performs one step (see steps.cpp for the list) and sets `front` to the window
// the step brings up. False for an unknown step.
bool PerformStep(Workbench& workbench, const QString& text, Form*& front);

} // namespace tarnic
