#include "platform/qt_dialogs.h"

#include "platform/file_filter.h"
#include "widgets/fit_title.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QMessageBox>

namespace kdx {

namespace {

QWidget* owner(QWidget* parent) { return parent ? parent : QApplication::activeWindow(); }

QString startPath(const FileDialogRequest& r)
{
    QString name = QString::fromStdString(r.fileName);
    if (!r.initialDir.empty() && QFileInfo(name).isRelative())
        name = QDir(QString::fromStdString(r.initialDir)).filePath(name);
    return name;
}

QString selectedFilter(const FileDialogRequest& r)
{
    const auto entries = QString::fromStdString(toQtFilter(r.filter)).split(";;");
    const int i = r.filterIndex - 1;
    return i >= 0 && i < entries.size() ? entries[i] : QString();
}

} // namespace

Answer QtDialogs::MsgBox(const std::string& prompt, int style, const std::string& title)
{
    QMessageBox box(owner(parent_));
    box.setWindowTitle(QString::fromStdString(title));
    box.setText(QString::fromStdString(prompt));
    const int buttons = style & 7;
    const int icon = style & 0x70;
    box.setIcon(icon == box::Critical      ? QMessageBox::Critical
                : icon == 32               ? QMessageBox::Question
                : icon == box::Exclamation ? QMessageBox::Warning
                : icon == 64               ? QMessageBox::Information
                                           : QMessageBox::NoIcon);
    if (buttons == box::YesNo) {
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
        box.setDefaultButton(QMessageBox::Yes);
    } else if (buttons == 1) {
        box.setStandardButtons(QMessageBox::Ok | QMessageBox::Cancel);
    } else if (buttons == 3) {
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
    } else {
        box.setStandardButtons(QMessageBox::Ok);
    }
    fitTitle(&box);
    switch (box.exec()) {
    case QMessageBox::Yes: return Answer::Yes;
    case QMessageBox::No: return Answer::No;
    case QMessageBox::Cancel: return Answer::Cancel;
    default: return Answer::Ok;
    }
}

std::string QtDialogs::InputBox(const std::string& prompt, const std::string& title, const std::string& defaultText)
{
    QInputDialog dialog(owner(parent_));
    dialog.setWindowTitle(QString::fromStdString(title));
    dialog.setLabelText(QString::fromStdString(prompt));
    dialog.setTextValue(QString::fromStdString(defaultText));
    fitTitle(&dialog);
    return dialog.exec() == QDialog::Accepted ? dialog.textValue().toStdString() : std::string();
}

std::optional<std::string> QtDialogs::OpenFile(const FileDialogRequest& r)
{
    QString filter = selectedFilter(r);
    const QString path = QFileDialog::getOpenFileName(owner(parent_), QString::fromStdString(r.title), startPath(r),
                                                      QString::fromStdString(toQtFilter(r.filter)), &filter);
    if (path.isEmpty()) return std::nullopt;
    return path.toStdString();
}

std::optional<std::string> QtDialogs::SaveFile(const FileDialogRequest& r)
{
    QFileDialog dialog(owner(parent_), QString::fromStdString(r.title));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setNameFilter(QString::fromStdString(toQtFilter(r.filter)));
    const QString sel = selectedFilter(r);
    if (!sel.isEmpty()) dialog.selectNameFilter(sel);
    if (!r.defaultExt.empty()) dialog.setDefaultSuffix(QString::fromStdString(r.defaultExt));
    const QString start = startPath(r);
    if (!start.isEmpty()) dialog.selectFile(start);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return std::nullopt;
    return dialog.selectedFiles().first().toStdString();
}

} // namespace kdx
