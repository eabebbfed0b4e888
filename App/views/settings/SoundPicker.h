// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QComboBox>

#include <string>

class SystemSounds;

/// A choice of sound. A sound that is chosen can be heard once.
class SoundPicker final : public QComboBox {
    Q_OBJECT

public:
    explicit SoundPicker(SystemSounds& sounds, QWidget* parent = nullptr);

    /// Shows what is stored; a name that is not offered shows as nothing chosen.
    void setStored(const std::string& value);

Q_SIGNALS:
    /// The user chose what is to be stored under this name.
    void chosen(const std::string& value);

private:
    SystemSounds& sounds_;
    std::string sound;

    void change(const std::string& value);
};
