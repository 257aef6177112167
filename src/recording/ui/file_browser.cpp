#include "recording/ui/file_browser.h"

#include <QComboBox>
#include <QDir>
#include <QEvent>
#include <QFileSystemModel>
#include <QHeaderView>
#include <QListView>
#include <QStorageInfo>
#include <QScrollBar>
#include <QTimer>
#include <QTreeView>
#include <QVBoxLayout>

namespace vess {

FileBrowser::FileBrowser(QWidget* parent)
    : QWidget(parent),
      drives_(new QComboBox(this)),
      folders_(new QTreeView(this)),
      files_(new QListView(this)),
      folderModel_(new QFileSystemModel(this)),
      fileModel_(new QFileSystemModel(this)) {
    drives_->setObjectName("DrListBoxFETCH");
    folders_->setObjectName("DirListBoxFETCH");
    files_->setObjectName("FListBoxFETCH");

    drives_->addItem(QDir::homePath(), QDir::homePath());
    for (const QFileInfo& root : QDir::drives())
        drives_->addItem(QDir::toNativeSeparators(root.absoluteFilePath()), root.absoluteFilePath());

    folderModel_->setFilter(QDir::AllDirs | QDir::NoDotAndDotDot | QDir::Drives);
    folderModel_->setRootPath(QString());
    folders_->setModel(folderModel_);
    for (int c = 1; c < folderModel_->columnCount(); ++c) folders_->hideColumn(c);
    folders_->header()->hide();

    fileModel_->setFilter(QDir::Files);
    fileModel_->setNameFilters({"*.abf", "*.ABF", "*.Abf", "*.evt", "*.EVT", "*.Evt"});
    fileModel_->setNameFilterDisables(false);
    files_->setModel(fileModel_);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(drives_);
    layout->addWidget(folders_, 3);
    layout->addWidget(files_, 2);

    // The folder model fills in the background: show the chosen folder once
    // its parents are read.
    connect(folderModel_, &QFileSystemModel::directoryLoaded, this, [this](const QString& dir) {
        // Only the chosen folder and its parents (not /home/ab for /home/a).
        const QString parent = dir.endsWith('/') ? dir : dir + '/';
        if (folder_ == dir || folder_.startsWith(parent)) RevealFolder();
    });
    // Folders read later (and the model's delayed sort) add rows above the
    // chosen folder and move it out of view: it is brought back until the
    // user takes the tree in hand.
    revealTimer_.setSingleShot(true);
    revealTimer_.setInterval(0);
    connect(&revealTimer_, &QTimer::timeout, this, &FileBrowser::RevealFolder);
    const auto keepInView = [this] {
        if (pinned_) revealTimer_.start();
    };
    connect(folderModel_, &QAbstractItemModel::rowsInserted, this, keepInView);
    connect(folderModel_, &QAbstractItemModel::layoutChanged, this, keepInView);
    connect(folderModel_, &QAbstractItemModel::modelReset, this, keepInView);
    folders_->installEventFilter(this);
    folders_->viewport()->installEventFilter(this);
    folders_->verticalScrollBar()->installEventFilter(this);
    connect(drives_, &QComboBox::activated, this, &FileBrowser::OnDriveChosen);
    connect(folders_, &QTreeView::clicked, this, &FileBrowser::OnFolderActivated);
    connect(folders_, &QTreeView::activated, this, &FileBrowser::OnFolderActivated);
    connect(files_, &QListView::clicked, this, &FileBrowser::OnFileClicked);
    connect(files_, &QListView::activated, this, &FileBrowser::OnFileClicked);
}

void FileBrowser::SetFolder(const QString& folder) {
    const QString path = QDir(folder).absolutePath();
    if (path == folder_) return;
    folder_ = path;
    pinned_ = true;
    const QModelIndex dir = folderModel_->index(path);
    folders_->setCurrentIndex(dir);
    folders_->scrollTo(dir);
    folders_->expand(dir);
    files_->setRootIndex(fileModel_->setRootPath(path));
    QDir::setCurrent(path);
    emit FolderChanged(path);
}

void FileBrowser::RevealFolder() {
    const QModelIndex index = folderModel_->index(folder_);
    if (!index.isValid()) return;
    if (folders_->currentIndex() != index) folders_->setCurrentIndex(index);
    folders_->scrollTo(index, QAbstractItemView::PositionAtCenter);
}

void FileBrowser::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (shown_) return;
    shown_ = true;
    QTimer::singleShot(0, this, &FileBrowser::RevealFolder);
}

void FileBrowser::ShowOpenFile(const QString& path) {
    const QModelIndex index = path.isEmpty() ? QModelIndex() : fileModel_->index(path);
    if (index.isValid() && index.parent() == files_->rootIndex()) {
        files_->setCurrentIndex(index);
        return;
    }
    files_->selectionModel()->clear();
    files_->setCurrentIndex(QModelIndex());
}

bool FileBrowser::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::Wheel:
        case QEvent::KeyPress: pinned_ = false; break;
        default: break;
    }
    return QWidget::eventFilter(watched, event);
}

QModelIndex FileBrowser::IndexOfFile(const QString& name) const {
    return fileModel_->index(QDir(folder_).filePath(name));
}

void FileBrowser::OnDriveChosen(int index) { SetFolder(drives_->itemData(index).toString()); }

void FileBrowser::OnFolderActivated(const QModelIndex& index) {
    SetFolder(folderModel_->filePath(index));
}

void FileBrowser::OnFileClicked(const QModelIndex& index) {
    if (!index.isValid() || fileModel_->isDir(index)) return;
    emit FileChosen(fileModel_->filePath(index));
}

}  // namespace vess
