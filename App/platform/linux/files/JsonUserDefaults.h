// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Files.h"
#include "platform/Lifetime.h"
#include "platform/Observers.h"
#include "platform/UserDefaults.h"
#include "platform/linux/files/FolderWatch.h"

#include <QJsonObject>

#include <filesystem>
#include <optional>

class MainLoop;

/// Preferences in one flat JSON object in a file of the user's. Others may edit, replace, link or damage the file at
/// any time; keys that we do not know survive our writing.
class JsonUserDefaults final : public UserDefaults {
public:
    /// `file` need not exist; it is made at the first write.
    JsonUserDefaults(std::filesystem::path file, Files& files, MainLoop& loop);

    /// Tries once more to write what could not be written when it was set.
    ~JsonUserDefaults() override;
    JsonUserDefaults(const JsonUserDefaults&) = delete;
    JsonUserDefaults& operator=(const JsonUserDefaults&) = delete;

    void registerDefaults(const Dictionary& fallbacks) override;
    bool boolForKey(std::string_view key) const override;
    std::int64_t integerForKey(std::string_view key) const override;
    double doubleForKey(std::string_view key) const override;
    std::optional<std::string> stringForKey(std::string_view key) const override;
    void setObject(std::string_view key, const Value& value) override;
    [[nodiscard]] Subscription onChange(std::function<void()> callback) override;

private:
    struct Content {
        QJsonObject values;
        bool isDamaged = false; ///< there is something that is no JSON object
    };

    std::filesystem::path file_;
    Files& files_;
    MainLoop& loop_;
    Dictionary fallbacks_;
    QJsonObject values_;
    QJsonObject unwritten_; ///< set in this run, and not on the disk because it could not be written
    Observers<> observers_;
    FolderWatch watch_;
    Lifetime lifetime_;

    Content load() const;
    QJsonObject withUnwritten(QJsonObject values) const;
    void write();
    void setDamagedAside();
    void fileChanged();
    void announce();
    void watchFile();
    const Value* fallback(std::string_view key) const { return find(fallbacks_, key); }
};
