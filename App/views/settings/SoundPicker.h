// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QComboBox>

#include <string>

class SystemSounds;

/// A combo box of sounds. A sound is played once when it is chosen.
class SoundPicker final : public QComboBox {
    Q_OBJECT

public:
    explicit SoundPicker(SystemSounds& sounds, QWidget* parent = nullptr);

    /// Shows the stored value; for a name that is not on offer, nothing is selected.
    void setStored(const std::string& value);

Q_SIGNALS:
    /// The user chose the sound that is stored under this name.
    void chosen(const std::string& value);

private:
    SystemSounds& sounds_;
    std::string sound;

    void change(const std::string& value);
};
