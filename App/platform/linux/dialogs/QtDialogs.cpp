// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/dialogs/QtDialogs.h"

#include "platform/linux/dialogs/PortalSaveDialog.h"
#include "platform/qt/MessageBoxText.h"

#include <QApplication>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontMetrics>
#include <QKeyEvent>
#include <QMessageBox>
#include <QMimeDatabase>
#include <QPushButton>
#include <QSettings>
#include <QStandardPaths>

#include <string>
#include <utility>

namespace {

/// A message box that can be closed without an answer, whatever its buttons are; Qt's own takes closing for one of
/// them, or cannot be closed at all.
class MessageBox final : public QMessageBox {
public:
    MessageBox(const QString& name, const QString& text, const QString& informativeText) {
        setObjectName(name);
        setWindowTitle(QApplication::applicationDisplayName());
        setTextFormat(Qt::PlainText);
        setText(text);
        setExplanation(*this, informativeText);
    }

    /// Buttons of one role keep the order in which they are added, on all desktops.
    QPushButton* add(const QString& label) { return addButton(label, QMessageBox::ActionRole); }

protected:
    void keyPressEvent(QKeyEvent* event) override {
        if (event->matches(QKeySequence::Cancel))
            reject();
        else
            QMessageBox::keyPressEvent(event);
    }
    void closeEvent(QCloseEvent* event) override {
        // QMessageBox would ignore it, or take it for one of the buttons.
        QDialog::closeEvent(event); // NOLINT(bugprone-parent-virtual-call)
    }
};

const QString saveDialogTitle = QStringLiteral("Save As");

/// Our visible windows that the window manager manages, the active one first.
QList<QWidget*> ordinaryWindows() {
    QList<QWidget*> windows;
    for (QWidget* window : QApplication::topLevelWidgets()) {
        const bool isOrdinary = window->windowType() == Qt::Window || window->windowType() == Qt::Dialog;
        // An icon embedded in a panel is a window too, but not a managed one.
        if (!window->isVisible() || !isOrdinary || window->windowFlags().testFlag(Qt::BypassWindowManagerHint) ||
            window->testAttribute(Qt::WA_DontShowOnScreen))
            continue;
        windows.insert(window->isActiveWindow() ? 0 : windows.size(), window);
    }
    return windows;
}

void activate(QWidget& window) {
    if (window.testAttribute(Qt::WA_DontShowOnScreen)) // the desktop shows its own dialog instead
        return;
    window.raise();
    window.activateWindow();
}

/// Shows the dialog and waits. Not by its own exec(): a dialog of the desktop's may then run a loop of the desktop's
/// own (GTK's does), which does not end when the program is to end.
bool run(QDialog& dialog) {
    // A popup would stay above the dialog and take no input.
    while (QWidget* popup = QApplication::activePopupWidget()) {
        if (!popup->close())
            break;
    }
    QEventLoop loop;
    QObject::connect(&dialog, &QDialog::finished, &loop, &QEventLoop::quit);
    dialog.setResult(QDialog::Rejected);
    dialog.setWindowModality(Qt::ApplicationModal);
    dialog.show();
    activate(dialog);
    loop.exec();
    return dialog.result() == QDialog::Accepted;
}

/// Whether the file may be written: it does not exist, or the user agrees.
bool mayReplace(const QFileInfo& file) {
    if (!file.exists())
        return true;
    MessageBox box(QStringLiteral("replaceAlert"), QStringLiteral("%1 already exists.").arg(file.fileName()),
                   QStringLiteral("Do you want to replace it?"));
    box.setIcon(QMessageBox::Warning);
    const QAbstractButton* replace = box.add(QStringLiteral("Replace"));
    box.setDefaultButton(box.add(QStringLiteral("Cancel")));
    run(box);
    return box.clickedButton() == replace;
}

/// The file, with the suffix added where its name has none. The dot that begins a hidden file's name begins no suffix.
QString withSuffix(const QString& file, const QString& suffix) {
    const bool hasSuffix = QFileInfo(file).fileName().lastIndexOf(QLatin1Char('.')) > 0;
    return hasSuffix || suffix.isEmpty() ? file : file + QLatin1Char('.') + suffix;
}

/// Lets the user choose until there is a file that may be written; empty if cancelled.
QString chosenFile(QFileDialog& dialog, const QString& suffix) {
    while (run(dialog)) {
        const QString selected = dialog.selectedFiles().value(0);
        if (selected.isEmpty()) // a place that is no folder on this machine
            return {};
        QString file = withSuffix(selected, suffix);
        // The dialog has asked about the name as typed. It could add the suffix itself, but some desktops' dialogs do
        // so only after they have asked.
        if (file == selected || mayReplace(QFileInfo(file)))
            return file;
    }
    return {};
}

/// Marks a dialog as the open one as long as this object lives.
class Opened {
public:
    Opened(QDialog*& open, QDialog& dialog) : open_(open), before_(std::exchange(open, &dialog)) {}
    ~Opened() { open_ = before_; }
    Opened(const Opened&) = delete;
    Opened& operator=(const Opened&) = delete;

private:
    QDialog*& open_;
    QDialog* before_;
};

} // namespace

QtDialogs::QtDialogs(std::optional<QDBusConnection> portal, std::chrono::milliseconds portalTimeout)
    : portal_(std::move(portal))
    , portalTimeout_(portalTimeout) {}

void QtDialogs::bringToFront() {
    const QList<QWidget*> windows = ordinaryWindows();
    // In reverse, so that the active one stays in front.
    for (auto window = windows.crbegin(); window != windows.crend(); ++window)
        activate(**window);
}

bool QtDialogs::mayOpen() {
    if (open_ != nullptr)
        activate(*open_);
    return open_ == nullptr;
}

QString QtDialogs::startFolder() const {
    for (const QString& folder : {folder_, QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation)}) {
        if (!folder.isEmpty() && QFileInfo(folder).isDir())
            return folder;
    }
    return QDir::homePath();
}

std::optional<std::filesystem::path> QtDialogs::runSaveDialog(const SaveDialog& asked) {
    if (!mayOpen())
        return std::nullopt;
    const SaveAnswer answer = askPortal(asked);
    std::optional<std::filesystem::path> file;
    if (answer.outcome == SaveAnswer::Outcome::chosen)
        file = answer.file;
    else if (answer.outcome == SaveAnswer::Outcome::failed)
        file = askOurselves(asked);
    if (file)
        folder_ = QFile::decodeName(file->parent_path().c_str());
    return file;
}

SaveAnswer QtDialogs::askPortal(const SaveDialog& asked) {
    if (!portal_)
        return {.outcome = SaveAnswer::Outcome::failed, .file = {}};
    const QString contentType = QString::fromStdString(asked.contentType);
    const QList<QWidget*> windows = ordinaryWindows();
    PortalSaveDialog dialog(*portal_, portalTimeout_);
    dialog.ask({.title = saveDialogTitle,
                .parentWindow = QString::fromStdString(portalParentWindow(
                    QGuiApplication::platformName().toStdString(), windows.isEmpty() ? 0 : windows.first()->winId())),
                .name = QString::fromStdString(asked.suggestedName),
                .folder = QFile::encodeName(startFolder()),
                .contentType = contentType,
                .typeName = QMimeDatabase().mimeTypeForName(contentType).comment()});
    const Opened opened(open_, dialog);
    run(dialog);
    return dialog.answer();
}

std::optional<std::filesystem::path> QtDialogs::askOurselves(const SaveDialog& asked) {
    // QFileDialog would store its layout and history in a file beside the user's settings.
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("/dev/null"));
    const QString contentType = QString::fromStdString(asked.contentType);
    QFileDialog dialog;
    dialog.setObjectName(QStringLiteral("saveDialog"));
    dialog.setWindowTitle(saveDialogTitle);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setMimeTypeFilters({contentType});
    dialog.setDirectory(startFolder());
    dialog.selectFile(QString::fromStdString(asked.suggestedName));
    const Opened opened(open_, dialog);
    const QString file = chosenFile(dialog, QMimeDatabase().mimeTypeForName(contentType).preferredSuffix());
    if (file.isEmpty())
        return std::nullopt;
    return QFile::encodeName(file).toStdString();
}

std::optional<std::size_t> QtDialogs::runAlert(const Alert& alert) {
    if (!mayOpen())
        return std::nullopt;
    MessageBox box(QStringLiteral("alert"), QString::fromStdString(alert.message),
                   QString::fromStdString(alert.informativeText));
    QList<QAbstractButton*> buttons;
    for (const std::string& label : alert.buttons)
        buttons.append(box.add(QString::fromStdString(label)));
    if (!buttons.isEmpty())
        box.setDefaultButton(static_cast<QPushButton*>(buttons.first()));
    const Opened opened(open_, box);
    run(box);
    const qsizetype clicked = buttons.indexOf(box.clickedButton());
    return clicked < 0 ? std::nullopt : std::optional(static_cast<std::size_t>(clicked));
}

void QtDialogs::runErrorAlert(const std::filesystem::path& file, std::error_code error) {
    const QString name = QFile::decodeName(file.filename().c_str());
    // A name of 255 letters is one word and would make the box that wide.
    const QFontMetrics font(QApplication::font());
    const QString shown = font.elidedText(name, Qt::ElideMiddle, font.averageCharWidth() * 50);
    MessageBox box(QStringLiteral("errorAlert"), QStringLiteral("There was a problem with “%1”.").arg(shown),
                   QString::fromLocal8Bit(error.message().c_str()));
    box.setIcon(QMessageBox::Warning);
    box.setDefaultButton(box.add(QStringLiteral("OK")));
    const Opened opened(open_, box);
    run(box);
}
