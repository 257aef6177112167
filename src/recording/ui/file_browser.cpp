#include "recording/ui/file_browser.h"

#include <QComboBox>
#include <QDir>
#include <QEvent>
#include <QFileSystemModel>
#include <QHeaderView>
#include <QLineEdit>
#include <QListView>
#include <QStorageInfo>
#include <QScrollBar>
#include <QTimer>
#include <QTreeView>
#include <QVBoxLayout>

#include "recording/typed_path.h"

namespace vess {

FileBrowser::FileBrowser(QWidget* parent)
    : QWidget(parent),
      drives_(new QComboBox(this)),
      pathBox_(new QLineEdit(this)),
      folders_(new QTreeView(this)),
      files_(new QListView(this)),
      folderModel_(new QFileSystemModel(this)),
      fileModel_(new QFileSystemModel(this)) {
    drives_->setObjectName("DrListBoxFETCH");
    folders_->setObjectName("DirListBoxFETCH");
    files_->setObjectName("FListBoxFETCH");
    pathBox_->setObjectName("txtPath");
    pathBox_->setPlaceholderText(tr("Type or paste a folder or file, then Enter"));
    pathBox_->setClearButtonEnabled(true);

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
    layout->addWidget(pathBox_);
    layout->addWidget(folders_, 3);
    layout->addWidget(files_, 2);

    // The folder model fills in the background: show the chosen folder once
    // its parents are read.
    connect(folderModel_, &QFileSystemModel::directoryLoaded, this, [this](const QString& dir) {
        // Only the chosen folder and its parents (not /home/ab for /home/a).
        const QString parent = dir.endsWith('/') ? dir : dir + '/';
        if (!pinned_ || (folder_ != dir && !folder_.startsWith(parent))) return;
        RevealFolder();
        // Kept in view until a while after the folder itself was read (its
        // parents, read first, may change on disk all the time).
        if (folder_ == dir) folderRead_ = true;
        if (!folderRead_) unpinTimer_.start();
    });
    // Folders read later (and the model's delayed sort) add rows above the
    // chosen folder and move it out of view: it is brought back until the
    // user takes the tree in hand.
    unpinTimer_.setSingleShot(true);
    unpinTimer_.setInterval(2000);
    connect(&unpinTimer_, &QTimer::timeout, this, [this] { pinned_ = false; });
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
    connect(pathBox_, &QLineEdit::returnPressed, this, &FileBrowser::OnPathTyped);
    connect(pathBox_, &QLineEdit::textEdited, this, [this] { ShowPathProblem({}); });
    connect(folders_, &QTreeView::clicked, this, &FileBrowser::OnFolderActivated);
    connect(folders_, &QTreeView::activated, this, &FileBrowser::OnFolderActivated);
    connect(files_, &QListView::clicked, this, &FileBrowser::OnFileClicked);
    connect(files_, &QListView::activated, this, &FileBrowser::OnFileClicked);
}

void FileBrowser::SetFolder(const QString& folder) { ShowFolder(folder, true); }

void FileBrowser::ShowFolder(const QString& folder, bool keepInView) {
    const QString path = QDir(folder).absolutePath();
    if (path == folder_) return;
    folder_ = path;
    pinned_ = keepInView;
    folderRead_ = false;
    // A few seconds later the tree is the user's: folders that appear or
    // change on disk (an acquisition writing into them) leave the
    // selection, expansion and scroll as they are.
    if (keepInView) unpinTimer_.start();
    const QModelIndex dir = folderModel_->index(path);
    folders_->setCurrentIndex(dir);
    folders_->scrollTo(dir);
    folders_->expand(dir);
    files_->setRootIndex(fileModel_->setRootPath(path));
    pathBox_->setText(QDir::toNativeSeparators(path));
    ShowPathProblem({});
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

void FileBrowser::OnPathTyped() {
    const TypedPath typed = ResolveTypedPath(pathBox_->text().toStdString(), folder_.toStdString(),
                                             QDir::homePath().toStdString());
    const QString path = QString::fromStdString(typed.path.string());
    switch (typed.kind) {
        case TypedPath::Kind::Folder: SetFolder(path); break;
        case TypedPath::Kind::File:
            SetFolder(QString::fromStdString(typed.path.parent_path().string()));
            ShowOpenFile(path);
            emit FileChosen(path);
            break;
        case TypedPath::Kind::Missing:
            ShowPathProblem(pathBox_->text().trimmed().isEmpty() ? QString()
                                                                 : tr("No such folder or file: %1").arg(path));
            break;
    }
}

void FileBrowser::ShowPathProblem(const QString& problem) {
    pathBox_->setToolTip(problem);
    pathBox_->setStyleSheet(problem.isEmpty() ? QString() : QStringLiteral("QLineEdit { color: #b00020; }"));
}

void FileBrowser::OnDriveChosen(int index) { SetFolder(drives_->itemData(index).toString()); }

// The user's own choice in the tree is where the tree already is.
void FileBrowser::OnFolderActivated(const QModelIndex& index) {
    ShowFolder(folderModel_->filePath(index), false);
}

void FileBrowser::OnFileClicked(const QModelIndex& index) {
    if (!index.isValid() || fileModel_->isDir(index)) return;
    emit FileChosen(fileModel_->filePath(index));
}

}  // namespace vess
