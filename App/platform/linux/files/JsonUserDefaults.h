// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Files.h"
#include "platform/Lifetime.h"
#include "platform/Observers.h"
#include "platform/UserDefaults.h"
#include "platform/linux/files/FolderWatch.h"

#include <QJsonObject>

#include <filesystem>

class MainLoop;

/// Preferences as one flat JSON object in a file of the user's. Anybody may edit, replace, link or damage the file at
/// any time; keys that we do not know survive our writes.
class JsonUserDefaults final : public UserDefaults {
public:
    /// `file` need not exist; the first write creates it.
    JsonUserDefaults(std::filesystem::path file, Files& files, MainLoop& loop);

    /// Tries once more to write settings that could not be written when they were set.
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
    std::filesystem::path file_;
    Files& files_;
    MainLoop& loop_;
    Dictionary fallbacks_;
    QJsonObject values_;
    QJsonObject unwritten_; ///< set in this run, and not in the file yet
    bool isThere_ = false;  ///< there was a file when it was last looked for
    bool isWriting_ = false;
    Observers<> observers_;
    FolderWatch watch_;
    Lifetime lifetime_;

    void write();
    void fileChanged();
    void announce();
    void watchFile();
    const Value* fallback(std::string_view key) const { return find(fallbacks_, key); }
};
