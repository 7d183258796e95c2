// The batch tool: one analysis of one file from the command line.
//
//   tarnic ACTION FILE [OPTIONS]
//
// Each action is the clicks a user makes in the windows for one result, made by
// the same handlers on the same windows, offscreen; each option is a box of a
// window, typed before its button is pressed. So the tool writes exactly the
// files the windows write, under the same names in the same folders, and a
// value the window repairs is repaired the same way (and said on stderr).
//
// Output: the full path of every file written, one per line (NUL-terminated
// with --null), on stdout and nothing else there; every message a window would
// show goes to stderr, prefixed with the file's name. Exit status: 0 when files
// were written and no window refused, 1 for a bad input file or a run a window
// refused, 2 for a usage error.
#pragma once

#include <QStringList>

#include <cstdio>

namespace tarnic {

// Runs the tool on `args` (without the program's name); needs a QApplication.
int RunBatch(const QStringList& args, std::FILE* out, std::FILE* err);

} // namespace tarnic
