// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/dialogs/QtDialogs.h"

#include "platform/linux/files/PosixFiles.h"
#include "shell/AppModel.h"
#include "support/DialogsFixture.h"
#include "support/FakePlatform.h"

#include <QDialogButtonBox>
#include <QLabel>

#include <vector>

namespace {

class QtDialogsTest : public DialogsFixture {
protected:
    QtDialogs dialogs;
};

} // namespace

TEST_F(QtDialogsTest, TheSaveDialogOffersTheNameAndGivesTheFile) {
    whenShown<QFileDialog>("saveDialog", [&](QFileDialog& dialog) {
        EXPECT_EQ(nameOf(dialog).text(), QStringLiteral("history.csv"));
        EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Save As"));
        EXPECT_EQ(dialog.acceptMode(), QFileDialog::AcceptSave);
        EXPECT_EQ(dialog.mimeTypeFilters(), QStringList(QStringLiteral("text/csv")));
        EXPECT_EQ(dialog.nameFilters().size(), 1);
        picture(dialog, "save-dialog.png");
        press(nameOf(dialog), Qt::Key_Return);
    });
    EXPECT_EQ(dialogs.runSaveDialog(history), home.path / "history.csv");
}

TEST_F(QtDialogsTest, TheSaveDialogGivesNothingWhenItIsClosed) {
    const std::function<void(QDialog&)> ways[] = {
        [](QDialog& dialog) {
            dialog.findChild<QDialogButtonBox*>(QStringLiteral("buttonBox"))->button(QDialogButtonBox::Cancel)->click();
        },
        [](QDialog& dialog) { press(dialog, Qt::Key_Escape); },
        [](QDialog& dialog) { dialog.close(); },
    };
    for (const auto& close : ways) {
        whenShown("saveDialog", close);
        EXPECT_EQ(dialogs.runSaveDialog(history), std::nullopt);
    }
}

TEST_F(QtDialogsTest, TheSaveDialogGivesANameAsItIs) {
    const char* names[] = {"Akku \xE2\x99\xAA \xC3\xBC.csv", "u\xCC\x88.csv", "it's $(100%) & <b>.csv", "-rf.csv",
                           "\xF0\x9F\x94\x8B.csv"};
    for (const char* name : names) {
        whenShown("saveDialog", [&](QDialog& dialog) { save(dialog, name); });
        EXPECT_EQ(dialogs.runSaveDialog(history), home.path / name);
    }
}

TEST_F(QtDialogsTest, TheSaveDialogAddsTheSuffixWhereThereIsNone) {
    const std::pair<const char*, const char*> rows[] = {{"battery", "battery.csv"},
                                                        {"battery.csv", "battery.csv"},
                                                        {"battery.txt", "battery.txt"},
                                                        {".battery", ".battery.csv"}};
    for (const auto& [typed, given] : rows) {
        whenShown("saveDialog", [&, name = typed](QDialog& dialog) { save(dialog, name); });
        EXPECT_EQ(dialogs.runSaveDialog(history), home.path / given);
    }
}

TEST_F(QtDialogsTest, TheSaveDialogAsksBeforeAFileIsReplaced) {
    write(home.path / "old.csv", "x");
    bool asked = false;
    whenShown("saveDialog", [&](QDialog& dialog) {
        whenAsked([&](QMessageBox& question) {
            asked = true;
            question.button(QMessageBox::No)->click();
        });
        save(dialog, "old.csv");
        EXPECT_TRUE(dialog.isVisible()) << "the answer was no";
        save(dialog, "new.csv");
    });
    EXPECT_EQ(dialogs.runSaveDialog(history), home.path / "new.csv");
    EXPECT_TRUE(asked);
}

TEST_F(QtDialogsTest, TheSaveDialogAsksAlsoWhenItHasAddedTheSuffix) {
    write(home.path / "old.csv", "x");
    whenShown("saveDialog", [&](QDialog& dialog) {
        save(dialog, "old");
        whenShown<QMessageBox>("replaceAlert", [&](QMessageBox& box) {
            EXPECT_EQ(box.text(), QStringLiteral("old.csv already exists."));
            EXPECT_EQ(box.defaultButton()->text(), QStringLiteral("Cancel"));
            picture(box, "replace-alert.png");
            click(box, QStringLiteral("Cancel"));
            whenShown("saveDialog", [&](QDialog& again) {
                EXPECT_EQ(&again, &dialog) << "with everything as it was";
                save(again, "old");
                whenShown<QMessageBox>("replaceAlert",
                                       [](QMessageBox& second) { click(second, QStringLiteral("Replace")); });
            });
        });
    });
    EXPECT_EQ(dialogs.runSaveDialog(history), home.path / "old.csv");
}

TEST_F(QtDialogsTest, TheSaveDialogStartsWhereTheLastFileWentOrAmongTheDocuments) {
    const auto folderOf = [this] {
        std::string folder;
        whenShown<QFileDialog>("saveDialog", [&](QFileDialog& dialog) {
            folder = dialog.directory().absolutePath().toStdString();
            dialog.reject();
        });
        EXPECT_FALSE(dialogs.runSaveDialog(history));
        return folder;
    };
    EXPECT_EQ(folderOf(), home.path);
    fs::create_directory(home.path / "Documents");
    EXPECT_EQ(folderOf(), home.path / "Documents");
    fs::create_directory(home.path / "other");
    whenShown("saveDialog", [&](QDialog& dialog) { save(dialog, (home.path / "other/x.csv").c_str()); });
    EXPECT_EQ(dialogs.runSaveDialog(history), home.path / "other/x.csv");
    EXPECT_EQ(folderOf(), home.path / "other");
    fs::remove(home.path / "other");
    EXPECT_EQ(folderOf(), home.path / "Documents");
}

TEST_F(QtDialogsTest, TheSaveDialogWritesNothingByItself) {
    whenShown("saveDialog", [](QDialog& dialog) { save(dialog, "x.csv"); });
    EXPECT_TRUE(dialogs.runSaveDialog(history));
    EXPECT_TRUE(fs::is_empty(home.path));
}

TEST_F(QtDialogsTest, AnAlertShowsItsTextsAndButtonsInTheirOrder) {
    whenShown<QMessageBox>("alert", [&](QMessageBox& box) {
        EXPECT_EQ(box.text(), QStringLiteral("Allow <b>this</b>?"));
        auto* informative = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_informativelabel"));
        ASSERT_NE(informative, nullptr);
        EXPECT_EQ(informative->text(), QStringLiteral("<i>Otherwise</i> there is nothing."));
        EXPECT_EQ(box.textFormat(), Qt::PlainText);
        EXPECT_EQ(informative->textFormat(), Qt::PlainText);
        EXPECT_EQ(buttonsOf(box).join(QLatin1Char('|')), QStringLiteral("Allow|Not Now|Never"));
        EXPECT_EQ(box.defaultButton()->text(), QStringLiteral("Allow"));
        picture(box, "alert.png");
        box.close();
    });
    dialogs.runAlert({.message = "Allow <b>this</b>?",
                      .informativeText = "<i>Otherwise</i> there is nothing.",
                      .buttons = {"Allow", "Not Now", "Never"}});
}

// Each desktop orders buttons by their roles: layout 0 is the order of Windows, 2 of KDE, 3 of GNOME.
TEST_F(QtDialogsTest, TheButtonsOfAnAlertKeepTheirOrderOnAllDesktops) {
    for (const int layout : {0, 2, 3}) {
        qApp->setStyleSheet(QStringLiteral("QDialogButtonBox { button-layout: %1 }").arg(layout));
        whenShown<QMessageBox>("alert", [&](QMessageBox& box) {
            EXPECT_EQ(buttonsOf(box).join(QLatin1Char('|')), QStringLiteral("Allow|Not Now|Never")) << layout;
            box.close();
        });
        dialogs.runAlert({.message = "Allow?", .informativeText = "", .buttons = {"Allow", "Not Now", "Never"}});
    }
    qApp->setStyleSheet(QString());
}

TEST_F(QtDialogsTest, AnAlertTellsTheButtonThatEndedIt) {
    const std::vector<std::string> buttons = {"Allow", "Not Now", "Never"};
    for (std::size_t count = 1; count <= buttons.size(); ++count) {
        const Dialogs::Alert alert{.message = "Allow?",
                                   .informativeText = "",
                                   .buttons = {buttons.begin(), buttons.begin() + static_cast<int>(count)}};
        SCOPED_TRACE(count);
        for (std::size_t button = 0; button < count; ++button) {
            whenShown<QMessageBox>("alert",
                                   [&](QMessageBox& box) { click(box, QString::fromStdString(buttons[button])); });
            EXPECT_EQ(dialogs.runAlert(alert), button);
        }
        whenShown("alert", [](QDialog& dialog) { press(dialog, Qt::Key_Return); });
        EXPECT_EQ(dialogs.runAlert(alert), 0U);
        whenShown("alert", [](QDialog& dialog) { press(dialog, Qt::Key_Escape); });
        EXPECT_EQ(dialogs.runAlert(alert), std::nullopt);
        whenShown("alert", [](QDialog& dialog) { EXPECT_TRUE(dialog.close()); });
        EXPECT_EQ(dialogs.runAlert(alert), std::nullopt);
    }
}

TEST_F(QtDialogsTest, AnErrorAlertNamesTheFileAndSaysWhatTheSystemSays) {
    const std::error_code full(ENOSPC, std::system_category());
    whenShown<QMessageBox>("errorAlert", [&](QMessageBox& box) {
        EXPECT_EQ(box.text(), QString::fromUtf8("There was a problem with “<u>Akku ♪.csv”."));
        EXPECT_EQ(box.informativeText().toStdString(), full.message());
        EXPECT_EQ(box.windowModality(), Qt::ApplicationModal);
        picture(box, "error-alert.png");
        click(box, QStringLiteral("OK"));
    });
    dialogs.runErrorAlert(home.path / "<u>Akku \xE2\x99\xAA.csv", full);
}

TEST_F(QtDialogsTest, AnErrorAlertBearsAnyName) {
    for (const std::string& name : {std::string(250, 'x'), std::string("caf\xE9.csv"), std::string()}) {
        int width = 0;
        whenShown("errorAlert", [&](QDialog& dialog) {
            width = dialog.width();
            press(dialog, Qt::Key_Escape);
        });
        dialogs.runErrorAlert(home.path / name, std::make_error_code(std::errc::io_error));
        EXPECT_GT(width, 0);
        EXPECT_LT(width, 800);
    }
}

TEST_F(QtDialogsTest, TimersGoOnWhileAPanelIsOpen) {
    int ticks = 0;
    QDialog* open = nullptr;
    const auto timer = loop.repeat(5ms, 0s, [&] {
        if (open != nullptr && ++ticks == 3)
            open->reject();
    });
    for (const char* name : {"saveDialog", "alert", "errorAlert"}) {
        ticks = 0;
        whenShown(name, [&](QDialog& dialog) { open = &dialog; });
        if (name == std::string("saveDialog"))
            dialogs.runSaveDialog(history);
        else if (name == std::string("alert"))
            dialogs.runAlert({.message = "Allow?", .informativeText = "", .buttons = {"Allow", "Never"}});
        else
            dialogs.runErrorAlert("file", std::make_error_code(std::errc::io_error));
        EXPECT_EQ(ticks, 3) << name;
        open = nullptr;
    }
}

TEST_F(QtDialogsTest, TheProgramEndsWhileTheSaveDialogIsOpen) {
    for (const auto& end :
         {std::function<void()>(&QCoreApplication::quit), std::function<void()>([] { QCoreApplication::exit(); })}) {
        std::optional<fs::path> chosen = "not asked";
        whenShown("saveDialog", [&](QDialog&) { end(); });
        EXPECT_TRUE(mainLoopRuns([&] { chosen = dialogs.runSaveDialog(history); }));
        EXPECT_EQ(chosen, std::nullopt);
    }
}

TEST_F(QtDialogsTest, TheProgramEndsWhileItAsksWhetherToReplace) {
    write(home.path / "old.csv", "x");
    std::optional<fs::path> chosen = "not asked";
    // While Qt's file dialog asks.
    whenShown("saveDialog", [&](QDialog& dialog) {
        whenAsked([](QMessageBox&) { QCoreApplication::quit(); });
        save(dialog, "old.csv");
    });
    EXPECT_TRUE(mainLoopRuns([&] { chosen = dialogs.runSaveDialog(history); }));
    EXPECT_EQ(chosen, std::nullopt);
    // While our own alert asks.
    chosen = "not asked";
    whenShown("saveDialog", [&](QDialog& dialog) { save(dialog, "old"); });
    whenShown("replaceAlert", [](QDialog&) { QCoreApplication::quit(); });
    EXPECT_TRUE(mainLoopRuns([&] { chosen = dialogs.runSaveDialog(history); }));
    EXPECT_EQ(chosen, std::nullopt);
}

TEST_F(QtDialogsTest, TheProgramEndsWhileAnAlertIsOpen) {
    std::optional<std::size_t> button = 7;
    whenShown("alert", [](QDialog&) { QCoreApplication::quit(); });
    EXPECT_TRUE(mainLoopRuns([&] {
        button = dialogs.runAlert({.message = "Allow?", .informativeText = "", .buttons = {"Allow", "Never"}});
    }));
    EXPECT_EQ(button, std::nullopt);
    whenShown("errorAlert", [](QDialog&) { QCoreApplication::quit(); });
    EXPECT_TRUE(mainLoopRuns([&] { dialogs.runErrorAlert("file", std::make_error_code(std::errc::io_error)); }));
}

TEST_F(QtDialogsTest, ThereIsOnePanelAtATimeButAnErrorIsAlwaysTold) {
    bool errorWasTold = false;
    whenShown("saveDialog", [&](QDialog& dialog) {
        EXPECT_EQ(dialogs.runSaveDialog(history), std::nullopt);
        EXPECT_EQ(dialogs.runAlert({.message = "Allow?", .informativeText = "", .buttons = {"Allow"}}), std::nullopt);
        whenShown("errorAlert", [&](QDialog& alert) {
            errorWasTold = true;
            alert.close();
        });
        dialogs.runErrorAlert("file", std::make_error_code(std::errc::io_error));
        EXPECT_EQ(dialogs.runSaveDialog(history), std::nullopt) << "the first one is still open";
        save(dialog, "x.csv");
    });
    EXPECT_EQ(dialogs.runSaveDialog(history), home.path / "x.csv");
    EXPECT_TRUE(errorWasTold);
    whenShown("saveDialog", [](QDialog& dialog) { save(dialog, "y.csv"); });
    EXPECT_EQ(dialogs.runSaveDialog(history), home.path / "y.csv");
}

TEST_F(QtDialogsTest, APopupMakesRoomForAPanel) {
    QWidget popup(nullptr, Qt::Popup);
    popup.show();
    ASSERT_EQ(QApplication::activePopupWidget(), &popup);
    whenShown("alert", [&](QDialog& dialog) {
        EXPECT_FALSE(popup.isVisible());
        dialog.close();
    });
    dialogs.runAlert({.message = "Allow?", .informativeText = "", .buttons = {"Allow"}});
}

TEST_F(QtDialogsTest, BringsOrdinaryWindowsToTheFront) {
    QWidget window;
    QWidget embedded(nullptr, Qt::Window | Qt::BypassWindowManagerHint);
    for (QWidget* widget : {&window, &embedded}) {
        widget->setAttribute(Qt::WA_ShowWithoutActivating);
        widget->show();
    }
    QWidget hidden;
    ASSERT_FALSE(window.isActiveWindow());
    dialogs.bringToFront();
    EXPECT_TRUE(waitUntil([&] { return window.isActiveWindow(); }));
    EXPECT_FALSE(hidden.isVisible());
    EXPECT_FALSE(embedded.isActiveWindow());
}

/// The model with real files, real dialogs and a real main loop; everything else is fake.
class ExportTest : public QtDialogsTest {
protected:
    PosixFiles files{home.path / ".local/share"};
    FakePlatform fake;
    AppModel model{{fake.powerSources, fake.powerSaving, fake.lowPowerSwitch, fake.sessionEvents, loop, fake.clock,
                    fake.calendar, fake.defaults, files, fake.statusBar, fake.windows, dialogs, fake.notificationCenter,
                    fake.bundle, fake.sounds, fake.loginItem}};

    ExportTest() {
        fake.powerSources.setBattery(64, true);
        model.refresh(AppModel::Reason::timer);
    }
};

TEST_F(ExportTest, TheHistoryGoesToTheFileThatTheUserChoseWhileTheTimersGoOn) {
    int ticks = 0;
    const auto timer = loop.repeat(5ms, 0s, [&] { ++ticks; });
    whenShown("saveDialog", [&](QDialog& dialog) {
        EXPECT_TRUE(waitUntil([&] { return ticks > 0; }));
        save(dialog, "mine.csv");
    });
    model.exportHistoryCSV();
    EXPECT_EQ(files.read(home.path / "mine.csv", 1000),
              "timestamp,percent,charging,plugged_in\n2023-11-14T22:13:20Z,64,false,true\n");
}

TEST_F(ExportTest, NothingIsWrittenWhenTheUserCancels) {
    whenShown("saveDialog", [](QDialog& dialog) { dialog.reject(); });
    model.exportHistoryCSV();
    EXPECT_FALSE(fs::exists(home.path / "Velmora-history.csv"));
}

TEST_F(ExportTest, TheUserIsToldWhyNothingCouldBeWritten) {
    // By the time the file is written, a folder can have taken its place.
    whenShown("saveDialog", [&](QDialog& dialog) {
        save(dialog, "taken.csv");
        fs::create_directories(home.path / "taken.csv/inside");
    });
    QString told;
    whenShown<QMessageBox>("errorAlert", [&](QMessageBox& box) {
        told = box.text() + QLatin1Char('\n') + box.informativeText();
        box.accept();
    });
    model.exportHistoryCSV();
    EXPECT_TRUE(told.contains(QStringLiteral("taken.csv"))) << told.toStdString();
    EXPECT_TRUE(told.contains(QString::fromStdString(std::generic_category().message(EISDIR)))) << told.toStdString();
}
