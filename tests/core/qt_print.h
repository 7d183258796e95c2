// Lets GoogleTest print Qt strings as text in failure messages.
#pragma once

#include <QString>
#include <QStringList>

#include <ostream>

inline void PrintTo(const QString& s, std::ostream* out) { *out << '"' << s.toStdString() << '"'; }
inline void PrintTo(const QStringList& l, std::ostream* out) {
    *out << '[' << l.join(", ").toStdString() << ']';
}
