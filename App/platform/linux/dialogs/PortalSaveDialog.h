// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/dialogs/SavePortal.h"

#include <QByteArray>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QDialog>
#include <QElapsedTimer>
#include <QString>

#include <chrono>
#include <optional>

class QDBusPendingCallWatcher;

/// The desktop's own save dialog, from the file chooser portal on the session bus (org.freedesktop.portal.FileChooser).
/// This QDialog itself is never on the screen: it blocks our other windows while the desktop's dialog is open, and
/// finishes when that does, or when there is none. Destroying it early closes the desktop's dialog as well.
class PortalSaveDialog final : public QDialog {
    Q_OBJECT

public:
    struct Question {
        QString title;
        QString parentWindow; ///< as the portal names it; empty for none
        QString name;         ///< suggested for the file
        QByteArray folder;    ///< to start in
        QString contentType;  ///< the one MIME type that can be chosen
        QString typeName;     ///< the same for people
    };

    /// `timeout` is how long the portal may take to accept the question. The user may take any time.
    PortalSaveDialog(QDBusConnection bus, std::chrono::milliseconds timeout);
    ~PortalSaveDialog() override;

    /// Asks once, without waiting.
    void ask(const Question& question);

    /// The answer once finished; until then, cancelled.
    const SaveAnswer& answer() const { return answer_; }

private Q_SLOTS:
    void responded(const QDBusMessage& signal);

private:
    QDBusConnection bus_;
    std::chrono::milliseconds timeout_;
    QDBusServiceWatcher watcher_;
    QDBusPendingCallWatcher* call_ = nullptr; ///< the question, until the portal has accepted it
    QString request_;                         ///< its path
    bool hasTaken_ = false;                   ///< the portal has accepted the question
    QElapsedTimer sinceTaken_;
    std::optional<QDBusMessage> early_;
    bool isOver_ = false; ///< the portal has nothing left to do
    SaveAnswer answer_;

    void follow(const QString& request);
    void replied();
    void portalLost();
    void end(const SaveAnswer& answer);
};
