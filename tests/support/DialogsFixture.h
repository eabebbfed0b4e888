// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/dialogs/QtDialogs.h"
#include "platform/linux/session/QtMainLoop.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <type_traits>

namespace fs = std::filesystem;
using namespace std::chrono_literals;

/// An empty home, and a user who acts once a dialog is shown.
class DialogsFixture : public testing::Test {
protected:
    TemporaryFolder home;
    QtMainLoop loop;
    const Dialogs::SaveDialog history{.contentType = "text/csv", .suggestedName = "history.csv"};

    DialogsFixture() {
        qputenv("HOME", home.path.c_str());
        qputenv("XDG_CONFIG_HOME", (home.path / ".config").c_str());
        qputenv("XDG_DATA_HOME", (home.path / ".local/share").c_str());
        qputenv("XDG_CACHE_HOME", (home.path / ".cache").c_str());
    }

    static QDialog* visible(const QString& name) {
        for (QWidget* window : QApplication::topLevelWidgets()) {
            if (window->isVisible() && window->objectName() == name)
                return qobject_cast<QDialog*>(window);
        }
        return nullptr;
    }

    /// The user acts once the dialog of that name is visible. If it never is, everything is closed after a while.
    template <class Dialog = QDialog>
    void whenShown(const char* name, std::function<void(std::type_identity_t<Dialog>&)> act) {
        const auto find = [name = QString::fromLatin1(name)] { return dynamic_cast<Dialog*>(visible(name)); };
        when<Dialog>(find, std::move(act));
    }

    /// The same for one of Qt's own message boxes, which have no name.
    void whenAsked(std::function<void(QMessageBox&)> act) {
        when<QMessageBox>([] { return qobject_cast<QMessageBox*>(QApplication::activeModalWidget()); }, std::move(act));
    }

    static void press(QWidget& widget, Qt::Key key) {
        for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
            QKeyEvent event(type, key, Qt::NoModifier);
            QApplication::sendEvent(&widget, &event);
        }
    }

    static QLineEdit& nameOf(QDialog& dialog) { return *dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit")); }

    static void save(QDialog& dialog, const char* name) {
        // Without the keyboard focus the dialog saves to the entry selected in its list.
        dialog.activateWindow();
        nameOf(dialog).setFocus();
        EXPECT_TRUE(waitUntil([&] { return nameOf(dialog).hasFocus(); }));
        nameOf(dialog).setText(QString::fromUtf8(name));
        press(nameOf(dialog), Qt::Key_Return);
    }

    static QStringList buttonsOf(const QMessageBox& box) {
        // From left to right.
        auto buttons = box.buttons();
        std::ranges::sort(buttons, {}, [](const QAbstractButton* button) { return button->x(); });
        QStringList labels;
        for (const QAbstractButton* button : buttons)
            labels.append(button->text());
        return labels;
    }

    static void click(const QMessageBox& box, const QString& label) {
        for (QAbstractButton* button : box.buttons()) {
            if (button->text() == label)
                return button->click();
        }
        ADD_FAILURE() << "no button " << label.toStdString();
    }

    static void picture(QWidget& window, const char* name) {
        const QString folder = QStringLiteral(VELMORA_PICTURES);
        ASSERT_TRUE(window.grab().save(folder + QLatin1Char('/') + QLatin1String(name)));
    }

    /// Runs `task` in the program's main loop until that is told to end; true if the task has finished and the loop
    /// returned 0.
    bool mainLoopRuns(std::function<void()> task) {
        bool isOver = false;
        loop.async([&] {
            task();
            isOver = true;
        });
        return QApplication::exec() == 0 && isOver;
    }

private:
    template <class Dialog>
    void when(std::function<Dialog*()> find, std::function<void(Dialog&)> act) {
        QElapsedTimer waited;
        waited.start();
        look(std::move(find), std::move(act), waited);
    }

    template <class Dialog>
    void look(std::function<Dialog*()> find, std::function<void(Dialog&)> act, QElapsedTimer waited) {
        loop.after(1ms, [=, this] {
            if (Dialog* dialog = find()) {
                act(*dialog);
            } else if (waited.elapsed() < 10'000) {
                look(find, act, waited);
            } else {
                ADD_FAILURE() << "it is not shown";
                QApplication::closeAllWindows();
            }
        });
    }
};
