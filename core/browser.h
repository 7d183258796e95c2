// The drive, directory and file lists of the file browser, on Linux.
//
// Drives are the mounted file systems, root first (pseudo file systems such as
// proc or sysfs are left out). The directory list shows the ancestors of its
// Path, from the root down, and below the Path its sub-directories, as a classic
// directory list does; double-clicking an entry moves Path there. The file list
// holds the plain files of its Path (no hidden files, no directories), sorted
// case-insensitively.
#pragma once

#include "core/controls.h"

#include <QComboBox>
#include <QListWidget>
#include <QStringList>

namespace tarnic {

class DriveList : public Control<QComboBox> {
  public:
    explicit DriveList(QWidget* parent);
    QString Drive() const { return currentText(); }
    Handler Change;

    static QStringList mountedFileSystems();

  private:
    bool assigning_ = false;
};

class DirList : public Control<QListWidget> {
  public:
    explicit DirList(QWidget* parent, const QString& path);
    QString Path() const { return path_; }
    // Moves to `path`; false, and nothing changes, when it is no readable
    // directory. Runs Change when the path really changes.
    bool setPath(const QString& path);
    void Refresh();
    Handler Change;

  private:
    void rebuild();
    QString path_;
};

class FileList : public Control<QListWidget> {
  public:
    explicit FileList(QWidget* parent, const QString& path);
    QString Path() const { return path_; }
    void setPath(const QString& path);
    void Refresh();
    // Entry i counted from 0; an empty text past the last entry.
    QString List(int index) const;
    int ListCount() const { return count(); }
    int ListIndex() const { return currentRow(); }
    void setListIndex(int index) { setCurrentRow(index); }
    // The selected entry, empty when none.
    QString FileName() const;
    // Selects the entry `name`; false when the list has no such entry.
    bool selectFile(const QString& name);
    Handler Click;
    Handler DblClick;

  private:
    QString path_;
};

} // namespace tarnic
