#include "app/qt_dialogs.h"

#include <QDir>
#include <QFileDialog>
#include <QDialog>
#include <QDialogButtonBox>
#include <QInputDialog>
#include <QLabel>
#include <QListWidget>
#include <QVBoxLayout>
#include <QMessageBox>
#include <QRegularExpression>
#include <QStringList>

#include "recording/ui/window_dialogs.h"

namespace vess {
namespace {

QString Q(const std::string& s) { return QString::fromStdString(s); }

// "*.EVT" -> "*.EVT *.evt"; patterns already mixed are kept once.
QString BothCases(const QString& patterns) {
    QStringList out;
    for (const QString& p : patterns.split(QRegularExpression("[;\\s]+"), Qt::SkipEmptyParts)) {
        for (const QString& v : {p, p.toUpper(), p.toLower()})
            if (!out.contains(v)) out << v;
    }
    return out.join(' ');
}

// "Name (*.A)" with its pattern list, or "Name" with the pattern given apart.
QString OneFilter(QString description, QString pattern) {
    description = description.trimmed();
    const auto open = description.lastIndexOf('(');
    const auto close = description.lastIndexOf(')');
    if (open >= 0 && close > open) {
        if (pattern.isEmpty()) pattern = description.mid(open + 1, close - open - 1);
        description = description.left(open).trimmed();
    }
    if (pattern.trimmed().isEmpty()) return description;
    return description + " (" + BothCases(pattern) + ")";
}

}  // namespace

QString ToQtFilter(const std::string& filter) {
    const QStringList parts = Q(filter).split('|');
    QStringList filters;
    if (parts.size() == 1) {
        filters << OneFilter(parts[0], {});
    } else {
        for (qsizetype i = 0; i < parts.size(); i += 2)
            filters << OneFilter(parts[i], i + 1 < parts.size() ? parts[i + 1] : QString());
    }
    filters.removeAll(QString());
    return filters.join(";;");
}

QWidget* QtDialogs::Parent() const {
    if (QWidget* asking = WindowDialogs::AskingWindow()) return asking;
    return parent_;
}

void QtDialogs::Message(const std::string& caption, const std::string& text) {
    QMessageBox::information(Parent(), Q(caption), Q(text));
}

bool QtDialogs::AskYesNo(const std::string& caption, const std::string& text) {
    return QMessageBox::question(Parent(), Q(caption), Q(text), QMessageBox::Yes | QMessageBox::No,
                                 QMessageBox::Yes) == QMessageBox::Yes;
}

Answer QtDialogs::AskYesNoCancel(const std::string& caption, const std::string& text) {
    const auto b = QMessageBox::question(Parent(), Q(caption), Q(text),
                                         QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel,
                                         QMessageBox::Yes);
    if (b == QMessageBox::Yes) return Answer::Yes;
    if (b == QMessageBox::No) return Answer::No;
    return Answer::Cancel;
}

bool QtDialogs::AskOkCancel(const std::string& caption, const std::string& text) {
    return QMessageBox::question(Parent(), Q(caption), Q(text), QMessageBox::Ok | QMessageBox::Cancel,
                                 QMessageBox::Cancel) == QMessageBox::Ok;
}

std::optional<std::string> QtDialogs::Input(const std::string& caption, const std::string& prompt,
                                            const std::string& initial) {
    bool ok = false;
    const QString answer =
        QInputDialog::getText(Parent(), Q(caption), Q(prompt), QLineEdit::Normal, Q(initial), &ok);
    if (!ok || answer.isEmpty()) return std::nullopt;
    return answer.toStdString();
}

QString QtDialogs::StartPath(const std::string& suggested) const {
    const std::filesystem::path name(suggested);
    if (!startFolder_ || name.is_absolute()) return Q(suggested);
    const std::filesystem::path folder = startFolder_();
    return QString::fromStdString((suggested.empty() ? folder : folder / name).string());
}

std::optional<std::string> QtDialogs::Choose(const std::string& caption, const std::string& prompt,
                                             const std::vector<std::string>& items, int initial) {
    QDialog dialog(Parent());
    dialog.setObjectName("chooseDialog");
    dialog.setWindowTitle(Q(caption));
    auto* label = new QLabel(Q(prompt), &dialog);
    label->setWordWrap(true);
    auto* list = new QListWidget(&dialog);
    list->setObjectName("lstChoice");
    for (const std::string& item : items) list->addItem(Q(item));
    if (initial >= 0 && initial < list->count()) list->setCurrentRow(initial);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    QObject::connect(list, &QListWidget::itemDoubleClicked, &dialog, &QDialog::accept);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(label);
    layout->addWidget(list);
    layout->addWidget(buttons);
    if (dialog.exec() != QDialog::Accepted || list->currentRow() < 0) return std::nullopt;
    return std::to_string(list->currentRow());
}

std::optional<std::string> QtDialogs::OpenFile(const FileDialogRequest& request) {
    const QString path = QFileDialog::getOpenFileName(Parent(), Q(request.caption),
                                                      StartPath(request.suggestedName),
                                                      ToQtFilter(request.filter));
    if (path.isEmpty()) return std::nullopt;
    return QDir::toNativeSeparators(path).toStdString();
}

std::optional<std::string> QtDialogs::SaveFile(const FileDialogRequest& request) {
    // The commands ask their own "Replace File" question, so Qt's is off.
    const QString path = QFileDialog::getSaveFileName(
        Parent(), Q(request.caption), StartPath(request.suggestedName), ToQtFilter(request.filter), nullptr,
        QFileDialog::DontConfirmOverwrite);
    if (path.isEmpty()) return std::nullopt;
    return QDir::toNativeSeparators(path).toStdString();
}

std::optional<std::vector<std::string>> QtDialogs::OpenFiles(const FileDialogRequest& request) {
    const QStringList paths = QFileDialog::getOpenFileNames(Parent(), Q(request.caption),
                                                            StartPath(request.suggestedName),
                                                            ToQtFilter(request.filter));
    if (paths.isEmpty()) return std::nullopt;
    std::vector<std::string> out;
    for (const QString& p : paths) out.push_back(QDir::toNativeSeparators(p).toStdString());
    return out;
}

std::optional<std::string> QtDialogs::ChooseFolder(const FolderDialogRequest& request) {
    const QString folder =
        QFileDialog::getExistingDirectory(Parent(), Q(request.caption), StartPath(request.startFolder));
    if (folder.isEmpty()) return std::nullopt;
    return QDir::toNativeSeparators(folder).toStdString();
}

}  // namespace vess
