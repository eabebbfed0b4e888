// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/settings/SettingsView.h"

#include "platform/Calendar.h"
#include "platform/Clock.h"
#include "platform/LoginItem.h"
#include "platform/UserDefaults.h"
#include "platform/qt/MessageBoxText.h"
#include "platform/qt/Text.h"
#include "shell/AppModel.h"
#include "views/settings/SoundPicker.h"
#include "views/settings/StepperBox.h"
#include "views/settings/TimeBox.h"
#include "views/settings/ToggleSwitch.h"
#include "views/style/BalancedLabel.h"
#include "views/style/FlatStyle.h"
#include "views/style/ViewStyle.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr int margin = 20;
constexpr int rowMargin = 12;
constexpr int rowHeight = 38;
constexpr int withoutHeader = 4; ///< more space above a card

/// The background of one section's rows, with lines between them.
class Card final : public QWidget {
public:
    explicit Card(QWidget* parent) : QWidget(parent) {
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 1, 0, 1); // the outline, and lines between the rows
        layout->setSpacing(1);
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.setBrush(palette().color(QPalette::Base));
        drawOutline(painter, rect(), controlRadius, hairlineColor(palette()));
        bool isFirst = true;
        for (const QObject* child : children()) {
            const auto* row = qobject_cast<const QWidget*>(child);
            if (row == nullptr || !row->isVisible())
                continue;
            if (!isFirst)
                drawHairline(painter, rowMargin, width() - rowMargin, row->y() - 1, palette());
            isFirst = false;
        }
    }
};

} // namespace

SettingsView::SettingsView(AppModel& theModel, const Platform& platform, QWidget* parent)
    : QWidget(parent)
    , model(theModel)
    , platform_(platform)
    , flat_(new FlatStyle(this)) {
    setObjectName(QStringLiteral("settingsView"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSpacing(6);
    for (const SettingsSection& section : settingsSections()) {
        QBoxLayout* rows = addSection(section.header);
        for (const SettingsControl& control : section.controls)
            addControl(rows, control);
        if (section.needsFirmwareLimit)
            observations_.push_back(model.hasFirmwareLimit.subscribe(
                [this, card = rows->parentWidget()](bool hasLimit) { showCard(card, hasLimit); }));
    }
    addGeneral();
    layout->addStretch(1);
    style();
    readAgain();
    observations_.push_back(platform_.defaults.onChange([this] { sync(); }));
}

SettingsView::~SettingsView() = default;

QBoxLayout* SettingsView::addSection(const std::string& header) {
    auto* layout = static_cast<QVBoxLayout*>(this->layout());
    if (!headers_.empty())
        layout->addSpacing(header.empty() ? withoutHeader : 10);
    auto* label = new QLabel(toQString(header), this);
    label->setObjectName(QStringLiteral("header"));
    label->setVisible(!header.empty());
    layout->addWidget(label);
    headers_.push_back(label);
    auto* card = new Card(this);
    card->setObjectName(QStringLiteral("section"));
    layout->addWidget(card);
    return static_cast<QBoxLayout*>(card->layout());
}

void SettingsView::showCard(QWidget* card, bool shown) {
    card->setVisible(shown);
    // What addSection puts above a card without a header: the space, the header that is not shown.
    auto* layout = static_cast<QVBoxLayout*>(this->layout());
    QSpacerItem* space = layout->itemAt(layout->indexOf(card) - 2)->spacerItem();
    space->changeSize(0, shown ? withoutHeader : 0, QSizePolicy::Minimum, QSizePolicy::Fixed);
    layout->invalidate();
}

void SettingsView::addRow(QBoxLayout* section, QLabel* label, QWidget* control) {
    auto* row = new QWidget(section->parentWidget());
    row->setObjectName(QStringLiteral("row"));
    row->setMinimumHeight(rowHeight);
    auto* line = new QHBoxLayout(row);
    const int room = control->property("roomAround").toInt(); // so that what is seen of it ends where the others do
    line->setContentsMargins(rowMargin, 5, rowMargin - room, 5);
    label->setParent(row);
    label->setBuddy(control);
    control->setParent(row);
    control->setAccessibleName(label->text());
    line->addWidget(label, 1);
    line->addWidget(control);
    section->addWidget(row);
}

void SettingsView::addControl(QBoxLayout* section, const SettingsControl& control) {
    auto* label = new BalancedLabel(toQString(control.label));
    label->setObjectName(toQString(control.key) + QLatin1String("Label"));
    QWidget* widget = nullptr;
    switch (control.kind) {
    case SettingsControl::Kind::toggle:
        widget = makeToggle(control);
        break;
    case SettingsControl::Kind::stepper:
        widget = makeStepper(control, label);
        break;
    case SettingsControl::Kind::sound:
        widget = makeSound(control);
        break;
    case SettingsControl::Kind::time:
        widget = makeTime(control);
        break;
    }
    widget->setObjectName(toQString(control.key));
    widget->installEventFilter(this);
    if (control.kind != SettingsControl::Kind::toggle)
        flat_->dress(*widget);
    addRow(section, label, widget);
    if (!control.enabledBy.empty()) {
        // Several controls are called "Sound"; their switch is visible above them, and screen readers get it from this.
        widget->setAccessibleDescription(findChild<QWidget*>(toQString(control.enabledBy))->accessibleName());
        syncs_.emplace_back([this, widget, label, key = control.enabledBy] {
            const bool isOn = platform_.defaults.boolForKey(key);
            widget->setEnabled(isOn);
            label->setEnabled(isOn);
        });
    }
}

QWidget* SettingsView::makeToggle(const SettingsControl& control) {
    auto* toggle = new ToggleSwitch;
    syncs_.emplace_back([this, toggle, key = control.key] { toggle->setChecked(platform_.defaults.boolForKey(key)); });
    connect(toggle, &ToggleSwitch::clicked, this, [this, key = control.key](bool on) {
        platform_.defaults.setObject(key, on);
        sync();
    });
    if (control.asksPermission) {
        // It does not matter who switches it on; but a question out of nowhere, with no form in sight, would be
        // alarming.
        connect(toggle, &ToggleSwitch::toggled, this, [this](bool on) {
            if (on && isVisible())
                model.notifier.requestIfNeeded();
        });
    }
    return toggle;
}

QWidget* SettingsView::makeStepper(const SettingsControl& control, QLabel* label) {
    auto* box = new StepperBox(static_cast<int>(control.least), static_cast<int>(control.most));
    syncs_.emplace_back([this, box, label, control] {
        const std::int64_t value = platform_.defaults.integerForKey(control.key);
        box->setStored(value);
        label->setText(toQString(stepperLabel(control, value)));
        box->setAccessibleName(label->text());
    });
    connect(box, &StepperBox::chosen, this, [this, key = control.key](int value) {
        platform_.defaults.setObject(key, value);
        sync();
    });
    return box;
}

QWidget* SettingsView::makeSound(const SettingsControl& control) {
    auto* picker = new SoundPicker(platform_.sounds);
    syncs_.emplace_back([this, picker, key = control.key] {
        picker->setStored(platform_.defaults.stringForKey(key).value_or("default"));
    });
    connect(picker, &SoundPicker::chosen, this,
            [this, key = control.key](const std::string& value) { platform_.defaults.setObject(key, value); });
    return picker;
}

QWidget* SettingsView::makeTime(const SettingsControl& control) {
    auto* box = new TimeBox;
    syncs_.emplace_back([this, box, key = control.key] {
        box->setStored(platform_.defaults.integerForKey(key), platform_.calendar.timeOfDay(platform_.clock.now()));
    });
    connect(box, &TimeBox::chosen, this,
            [this, key = control.key](int minutes) { platform_.defaults.setObject(key, minutes); });
    return box;
}

void SettingsView::addGeneral() {
    QBoxLayout* general = addSection("General");
    launchAtLogin_ = new ToggleSwitch;
    launchAtLogin_->setObjectName(QStringLiteral("launchAtLogin"));
    connect(launchAtLogin_, &ToggleSwitch::clicked, this, [this](bool on) { setLaunchAtLogin(on); });
    addRow(general, new BalancedLabel(QStringLiteral("Launch at Login")), launchAtLogin_);
    loginError_ = addNote(general, "loginError", {});
    loginError_->setVisible(false);
    const auto addButton = [&](const char* name, const QString& label, auto action) {
        auto* row = new QWidget(general->parentWidget());
        row->setMinimumHeight(rowHeight);
        auto* line = new QHBoxLayout(row);
        line->setContentsMargins(rowMargin, 5, rowMargin, 5);
        auto* button = new QPushButton(label, row);
        button->setObjectName(QLatin1String(name));
        button->setAutoDefault(false);
        flat_->dress(*button);
        connect(button, &QPushButton::clicked, this, action);
        line->addWidget(button);
        line->addStretch(1);
        general->addWidget(row);
    };
    addButton("exportHistory", QStringLiteral("Export History as CSV…"), [this] { model.exportHistoryCSV(); });
    addButton("resetHistory", QStringLiteral("Reset History…"), [this] { askReset(); });
    bundleNote_ =
        addNote(general, "bundleNote",
                QStringLiteral("Notifications need Velmora to run as an app bundle (see make_app.sh). Run from "
                               "the command line, alerts cannot be delivered."));
    bundleNote_->setVisible(!model.notifier.available());
    QBoxLayout* last = addSection({});
    addNote(last, "chargingNote",
            QStringLiteral("macOS may also hold charging at 80% itself (Optimized Battery Charging, System Settings, "
                           "Battery). Velmora can only remind you; it cannot control charging."));
}

QLabel* SettingsView::addNote(QBoxLayout* section, const char* name, const QString& words) {
    auto* note = new BalancedLabel(words, section->parentWidget());
    note->setObjectName(QLatin1String(name));
    note->setContentsMargins(rowMargin, 6, rowMargin, 6);
    section->addWidget(note);
    notes_.push_back(note);
    return note;
}

void SettingsView::readAgain() {
    launchAtLogin_->setChecked(platform_.loginItem.isEnabled());
    sync();
}

void SettingsView::sync() {
    for (const auto& each : syncs_)
        each();
}

void SettingsView::style() {
    for (QLabel* header : headers_)
        header->setFont(textFont(TextStyle::headline));
    for (QLabel* note : notes_) {
        Tint tint = Tint::secondary;
        if (note == loginError_)
            tint = Tint::red;
        else if (note == bundleNote_)
            tint = Tint::orange;
        QPalette colors = palette();
        colors.setColor(QPalette::WindowText, tintColorOn(palette().color(QPalette::Base), tint, palette()));
        note->setPalette(colors);
        note->setFont(textFont(TextStyle::caption));
    }
}

void SettingsView::setLaunchAtLogin(bool on) {
    const std::optional<std::string> failure =
        on ? platform_.loginItem.registerItem() : platform_.loginItem.unregisterItem();
    loginError_->setVisible(failure.has_value());
    loginError_->setText(failure ? toQString("Could not change Launch at Login: " + *failure) : QString());
    // The actual state, not the requested one.
    launchAtLogin_->setChecked(platform_.loginItem.isEnabled());
}

void SettingsView::askReset() {
    if (confirmReset_)
        return;
    confirmReset_ = new QMessageBox(QMessageBox::Warning, QStringLiteral("Velmora"), QStringLiteral("Reset history?"),
                                    QMessageBox::NoButton, this);
    confirmReset_->setObjectName(QStringLiteral("confirmReset"));
    confirmReset_->setAttribute(Qt::WA_DeleteOnClose);
    setExplanation(*confirmReset_, QStringLiteral("This deletes all saved battery samples used for the chart."));
    const QAbstractButton* reset = confirmReset_->addButton(QStringLiteral("Reset"), QMessageBox::DestructiveRole);
    QPushButton* cancel = confirmReset_->addButton(QStringLiteral("Cancel"), QMessageBox::RejectRole);
    confirmReset_->setDefaultButton(cancel);
    confirmReset_->setEscapeButton(cancel);
    connect(reset, &QAbstractButton::clicked, this, [this] { model.resetHistory(); });
    confirmReset_->open(); // blocks the form, but not the program
}

bool SettingsView::eventFilter(QObject* watched, QEvent* event) {
    // The wheel scrolls the form; it changes a control only once a key or a click has given it the focus.
    const auto* widget = qobject_cast<QWidget*>(watched);
    if (event->type() == QEvent::Wheel && widget != nullptr && !widget->hasFocus()) {
        event->ignore();
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void SettingsView::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange)
        style();
}
