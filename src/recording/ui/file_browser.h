// The file lists on the left of the main window: the roots (drives) with the
// home folder (DrListBoxFETCH), a box for a typed or pasted folder or file
// (txtPath), the folder browser (DirListBoxFETCH) and the ABF and event
// files of the chosen folder (FListBoxFETCH). A click on a file, or a file
// entered in the box, asks the owner to open it.
#pragma once

#include <QTimer>
#include <QWidget>

class QComboBox;
class QLineEdit;
class QFileSystemModel;
class QListView;
class QTreeView;
class QModelIndex;

namespace vess {

class FileBrowser : public QWidget {
    Q_OBJECT
public:
    explicit FileBrowser(QWidget* parent = nullptr);

    // Shows a folder in the browser and its files in the file list; the
    // process's current folder follows it. The tree keeps the folder in view
    // while it is being read (at most a few seconds); after that, changes
    // on disk leave the user's selection, expansion and scroll alone.
    void SetFolder(const QString& folder);
    bool KeepsFolderInView() const { return pinned_; }
    QString Folder() const { return folder_; }
    // The file list, for tests that click a file.
    QListView* FileList() const { return files_; }
    QTreeView* FolderTree() const { return folders_; }
    QLineEdit* PathBox() const { return pathBox_; }
    // Highlights the open file in the file list, or nothing when path is
    // empty or lies in another folder (a click that did not open its file
    // must not stay highlighted).
    void ShowOpenFile(const QString& path);
    // Row of a file name in the file list (invalid when absent).
    QModelIndex IndexOfFile(const QString& name) const;

protected:
    // The first show selects the folder and scrolls it into view, once the
    // tree has its size.
    void showEvent(QShowEvent* event) override;
    // A click, wheel or key in the tree ends the keeping in view.
    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    void FileChosen(const QString& path);
    void FolderChanged(const QString& folder);

private:
    void OnDriveChosen(int index);
    void OnFolderActivated(const QModelIndex& index);
    void OnFileClicked(const QModelIndex& index);
    // Enter in the path box: a folder is shown, a file is shown and opened,
    // anything else is marked in the box with the reason as its tip.
    void OnPathTyped();
    void ShowPathProblem(const QString& problem);
    // Makes the folder current in the tree and scrolls to it.
    void RevealFolder();
    void ShowFolder(const QString& folder, bool keepInView);

    QComboBox* drives_;
    QLineEdit* pathBox_;
    QTreeView* folders_;
    QListView* files_;
    QFileSystemModel* folderModel_;
    QFileSystemModel* fileModel_;
    QString folder_;
    bool shown_ = false;
    bool pinned_ = false;  // the chosen folder is kept in view as folders load
    bool folderRead_ = false;  // the model has read the chosen folder
    QTimer revealTimer_;
    QTimer unpinTimer_;
};

}  // namespace vess
