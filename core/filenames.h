// File names are bytes on Linux, and not every name is valid UTF-8 (a file
// copied from an old Latin-1 system, an archive unpacked as is). The program
// carries names in QString, so it decodes them losslessly: valid UTF-8 decodes
// as usual, and every byte that is not part of valid UTF-8 becomes the lone
// surrogate U+DC00 + byte (U+DC80 .. U+DCFF), which encodeFileName turns back
// into that byte. Every name therefore round-trips, is listed and can be
// opened, and the output names made from it carry the same bytes. Tarnic.dll
// reads the 16-bit codes of a file name by the same rule.
#pragma once

#include <QString>
#include <QStringList>

#include <string>
#include <string_view>

namespace tarnic {

QString decodeFileName(std::string_view bytes);
std::string encodeFileName(const QString& name);

// The names in a folder, hidden ones (starting with '.') left out, unsorted:
// the regular files (and links to them), or the sub-folders that can be
// entered and read. An unreadable folder lists nothing.
enum class EntryKind { Files, Folders };
QStringList folderEntries(const QString& folder, EntryKind kind);

// Whether the path names a folder that can be entered and read.
bool isReadableFolder(const QString& path);

} // namespace tarnic
