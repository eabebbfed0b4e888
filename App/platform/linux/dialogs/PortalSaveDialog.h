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
/// Of this dialog nothing is on the screen: it holds our other windows back while the desktop's is there, and is
/// finished when that is, or when there is none. Whoever goes on without its answer destroys it; the desktop's dialog
/// then goes as well.
class PortalSaveDialog final : public QDialog {
    Q_OBJECT

public:
    struct Question {
        QString title;
        QString parentWindow; ///< in the portal's words; empty where there is none
        QString name;         ///< proposed for the file
        QByteArray folder;    ///< to start in
        QString contentType;  ///< the one MIME type that can be chosen
        QString typeName;     ///< that, for people
    };

    /// `timeout` is how long the portal may take to say that it will ask. The user has all the time in the world.
    PortalSaveDialog(QDBusConnection bus, std::chrono::milliseconds timeout);
    ~PortalSaveDialog() override;

    /// Asks, once; without waiting.
    void ask(const Question& question);

    /// What came of it, once it is finished; cancelled while it is not.
    const SaveAnswer& answer() const { return answer_; }

private Q_SLOTS:
    void responded(const QDBusMessage& signal);

private:
    QDBusConnection bus_;
    std::chrono::milliseconds timeout_;
    QDBusServiceWatcher watcher_;
    QDBusPendingCallWatcher* call_ = nullptr; ///< the question, until the portal has said that it will ask
    QString request_;                         ///< its path
    bool hasTaken_ = false;                   ///< the portal has said so
    QElapsedTimer sinceTaken_;
    std::optional<QDBusMessage> early_;
    bool isOver_ = false; ///< for the portal
    SaveAnswer answer_;

    void follow(const QString& request);
    void replied();
    void portalLost();
    void end(const SaveAnswer& answer);
};
