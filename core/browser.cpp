#include "core/browser.h"

#include "core/filenames.h"

#include <QApplication>
#include <QCollator>
#include <QDir>
#include <QFile>
#include <QStyle>

#include <algorithm>

namespace tarnic {

QStringList DriveList::mountedFileSystems() {
    static const QStringList pseudo = {"proc",     "sysfs",  "devpts",   "cgroup",   "cgroup2",
                                       "mqueue",   "debugfs", "tracefs", "securityfs", "pstore",
                                       "bpf",      "configfs", "fusectl", "hugetlbfs", "autofs",
                                       "binfmt_misc", "devtmpfs", "rpc_pipefs", "nsfs", "efivarfs"};
    QStringList mounts{"/"};
    QFile file("/proc/mounts");
    if (file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        const QStringList lines = QString::fromLocal8Bit(file.readAll()).split('\n');
        for (const QString& line : lines) {
            const QStringList fields = line.split(' ');
            if (fields.size() < 3) continue;
            QString where = fields[1];
            where.replace("\\040", " ");
            if (pseudo.contains(fields[2]) || mounts.contains(where)) continue;
            if (where.startsWith("/proc") || where.startsWith("/sys") || where.startsWith("/dev"))
                continue;
            mounts << where;
        }
    }
    std::sort(mounts.begin() + 1, mounts.end());
    return mounts;
}

DriveList::DriveList(QWidget* parent) : Control<QComboBox>(parent) {
    addItems(mountedFileSystems());
    QObject::connect(this, &QComboBox::currentIndexChanged, [this] {
        if (!assigning_ && Change) Change();
    });
}

DirList::DirList(QWidget* parent, const QString& path)
    : Control<QListWidget>(parent), path_(QDir(path).absolutePath()) {
    rebuild();
    QObject::connect(this, &QListWidget::itemActivated, [this](QListWidgetItem* item) {
        setPath(item->data(Qt::UserRole).toString());
    });
}

bool DirList::setPath(const QString& path) {
    if (!isReadableFolder(path)) return false;
    // String operations only: a name that is not UTF-8 (see filenames.h) would
    // not survive the encoding that Qt's file classes apply.
    const QString clean = QDir::cleanPath(QDir::isAbsolutePath(path) ? path : path_ + "/" + path);
    if (clean == path_) return true;
    path_ = clean;
    rebuild();
    if (Change) Change();
    return true;
}

void DirList::Refresh() { rebuild(); }

void DirList::rebuild() {
    clear();
    const QIcon open = style()->standardIcon(QStyle::SP_DirOpenIcon);
    const QIcon closed = style()->standardIcon(QStyle::SP_DirClosedIcon);
    QStringList chain;
    for (QString d = path_;;) {
        chain.prepend(d);
        const qsizetype slash = d.lastIndexOf('/');
        if (d == "/" || slash < 0) break;
        d = slash == 0 ? QStringLiteral("/") : d.left(slash);
    }
    int level = 0;
    for (const QString& dir : chain) {
        const QString name = dir == "/" ? QStringLiteral("/") : dir.mid(dir.lastIndexOf('/') + 1);
        auto* item = new QListWidgetItem(open, QString(level * 2, ' ') + name, this);
        item->setData(Qt::UserRole, dir);
        ++level;
    }
    setCurrentRow(count() - 1);
    QStringList subdirs = folderEntries(path_, EntryKind::Folders);
    QCollator collator;
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::sort(subdirs.begin(), subdirs.end(), collator);
    for (const QString& sub : subdirs) {
        auto* item = new QListWidgetItem(closed, QString(level * 2, ' ') + sub, this);
        item->setData(Qt::UserRole, path_ == "/" ? "/" + sub : path_ + "/" + sub);
    }
}

FileList::FileList(QWidget* parent, const QString& path)
    : Control<QListWidget>(parent), path_(QDir(path).absolutePath()) {
    Refresh();
    QObject::connect(this, &QListWidget::itemClicked, [this] {
        if (Click) Click();
    });
    QObject::connect(this, &QListWidget::itemDoubleClicked, [this] {
        if (DblClick) DblClick();
    });
}

void FileList::setPath(const QString& path) {
    path_ = QDir::cleanPath(QDir(path).absolutePath());
    Refresh();
}

void FileList::Refresh() {
    const QString selected = FileName();
    clear();
    QStringList files = folderEntries(path_, EntryKind::Files);
    QCollator collator;
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::sort(files.begin(), files.end(), [&](const QString& a, const QString& b) {
        const int c = collator.compare(a, b);
        return c != 0 ? c < 0 : a < b;
    });
    addItems(files);
    if (!selected.isEmpty()) selectFile(selected);
}

QString FileList::List(int index) const {
    const QListWidgetItem* it = item(index);
    return it ? it->text() : QString();
}

QString FileList::FileName() const {
    const QListWidgetItem* it = currentItem();
    return it && it->isSelected() ? it->text() : QString();
}

bool FileList::selectFile(const QString& name) {
    for (int i = 0; i < count(); ++i)
        if (item(i)->text() == name) {
            setCurrentRow(i);
            item(i)->setSelected(true);
            return true;
        }
    return false;
}

} // namespace tarnic
