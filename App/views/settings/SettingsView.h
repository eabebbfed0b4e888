// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Platform.h"
#include "platform/Subscription.h"
#include "views/text/SettingsForm.h"

#include <QPointer>
#include <QWidget>

#include <functional>
#include <string>
#include <vector>

class AppModel;
class FlatStyle;
class QBoxLayout;
class QLabel;
class QMessageBox;
class ToggleSwitch;

/// The form of all preferences. The user's changes are stored at once; changes made elsewhere are shown at once.
class SettingsView final : public QWidget {
    Q_OBJECT

public:
    SettingsView(AppModel& model, const Platform& platform, QWidget* parent = nullptr);
    ~SettingsView() override;

    /// Rereads what is kept outside the preferences; to be called before the form is shown.
    void readAgain();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    AppModel& model;
    Platform platform_;
    FlatStyle* flat_;
    ToggleSwitch* launchAtLogin_ = nullptr;
    QLabel* loginError_ = nullptr;
    QLabel* bundleNote_ = nullptr;
    QPointer<QMessageBox> confirmReset_; ///< while the question is open
    std::vector<QLabel*> headers_;
    std::vector<QLabel*> notes_;
    std::vector<std::function<void()>> syncs_; ///< each sets one control to the stored value
    std::vector<Subscription> observations_;

    QBoxLayout* addSection(const std::string& header);
    void showCard(QWidget* card, bool shown);
    void addControl(QBoxLayout* section, const SettingsControl& control);
    QWidget* makeToggle(const SettingsControl& control);
    QWidget* makeStepper(const SettingsControl& control, QLabel* label);
    QWidget* makeSound(const SettingsControl& control);
    QWidget* makeTime(const SettingsControl& control);
    void addGeneral();
    QLabel* addNote(QBoxLayout* section, const char* name, const QString& text);
    void addRow(QBoxLayout* section, QLabel* label, QWidget* control);
    void sync();
    void style();
    void setLaunchAtLogin(bool on);
    void askReset();
};
