// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/settings/SoundPicker.h"

#include "platform/SystemSounds.h"
#include "platform/qt/Text.h"
#include "views/text/SettingsForm.h"

namespace {

constexpr int separatorAfter = 2; ///< choices that are not sounds of ours

} // namespace

SoundPicker::SoundPicker(SystemSounds& sounds, QWidget* parent) : QComboBox(parent), sounds_(sounds) {
    for (const SoundChoice& choice : soundChoices())
        addItem(toQString(choice.shown), toQString(choice.stored));
    insertSeparator(separatorAfter);
    setCurrentIndex(-1);
    connect(this, &QComboBox::activated, this, [this](int index) {
        const std::string value = itemData(index).toString().toStdString();
        if (value == sound)
            return;
        change(value);
        Q_EMIT chosen(value);
    });
}

void SoundPicker::setStored(const std::string& value) {
    setCurrentIndex(findData(toQString(value)));
    if (!isVisible())
        sound = value; // the user did not see it change
    else if (value != sound)
        change(value);
}

void SoundPicker::change(const std::string& value) {
    sound = value;
    if (isHeardWhenChosen(value))
        sounds_.play(value);
}
