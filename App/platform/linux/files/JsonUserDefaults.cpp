// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/files/JsonUserDefaults.h"

#include "platform/MainLoop.h"
#include "platform/linux/files/PosixFiles.h"
#include "platform/qt/Text.h"

#include <QJsonDocument>

#include <cmath>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

namespace fs = std::filesystem;

namespace {

constexpr std::size_t sizeLimit = std::size_t{1} << 20; // a thousand times what the program writes

QJsonValue toJson(const Value& value) {
    if (const std::string* text = value.text())
        return toQString(*text);
    if (const auto flag = value.boolean())
        return *flag;
    if (const auto* integer = std::get_if<std::int64_t>(&value.content))
        return static_cast<qint64>(*integer);
    return value.number().value_or(0);
}

/// A number without a fraction, 80 as well as 80.0.
std::optional<std::int64_t> integerOf(const QJsonValue& value) {
    if (!value.isDouble())
        return std::nullopt;
    // Both calls give the same number only if neither fell back to its default.
    const qint64 one = value.toInteger(0);
    return one == value.toInteger(1) ? std::optional<std::int64_t>(one) : std::nullopt;
}

struct Content {
    QJsonObject values;
    bool isThere = false;
    bool isDamaged = false; ///< it is there and holds no JSON object
};

Content parse(const fs::path& file, const std::optional<std::string>& text) {
    std::error_code error;
    if (!text) {
        // Who links the file to /dev/null wants nothing kept.
        const fs::file_status status = fs::status(file, error);
        const bool isThere = fs::is_regular_file(status) || fs::is_directory(status);
        return {.values = {}, .isThere = isThere, .isDamaged = isThere};
    }
    const auto document =
        QJsonDocument::fromJson(QByteArray::fromRawData(text->data(), static_cast<qsizetype>(text->size())));
    return {.values = document.object(), .isThere = true, .isDamaged = !document.isObject()};
}

QJsonObject merged(QJsonObject values, const QJsonObject& newer) {
    for (auto entry = newer.begin(); entry != newer.end(); ++entry)
        values.insert(entry.key(), entry.value());
    return values;
}

} // namespace

JsonUserDefaults::JsonUserDefaults(fs::path file, Files& files, MainLoop& loop)
    : file_(std::move(file))
    , files_(files)
    , loop_(loop)
    , watch_([this] { fileChanged(); }) {
    // So that this folder is watched from the start, and not the busy one above it.
    files_.createFolder(file_.parent_path());
    watchFile();
    const Content present = parse(file_, files_.read(file_, sizeLimit));
    values_ = present.values;
    isThere_ = present.isThere;
}

JsonUserDefaults::~JsonUserDefaults() {
    // The disk may have been full when the user chose it, and have room by now.
    if (!unwritten_.isEmpty())
        write();
}

void JsonUserDefaults::registerDefaults(const Dictionary& fallbacks) {
    for (const auto& [key, value] : fallbacks)
        fallbacks_.insert_or_assign(key, value);
}

bool JsonUserDefaults::boolForKey(std::string_view key) const {
    const QJsonValue stored = values_.value(toQString(key));
    if (stored.isBool())
        return stored.toBool();
    const Value* other = fallback(key);
    return other != nullptr && other->boolean().value_or(false);
}

std::int64_t JsonUserDefaults::integerForKey(std::string_view key) const {
    if (const auto stored = integerOf(values_.value(toQString(key))))
        return *stored;
    const Value* other = fallback(key);
    return other != nullptr ? other->integer().value_or(0) : 0;
}

double JsonUserDefaults::doubleForKey(std::string_view key) const {
    const QJsonValue stored = values_.value(toQString(key));
    if (stored.isDouble() && std::isfinite(stored.toDouble()))
        return stored.toDouble();
    const Value* other = fallback(key);
    return other != nullptr ? other->number().value_or(0) : 0;
}

std::optional<std::string> JsonUserDefaults::stringForKey(std::string_view key) const {
    const QJsonValue stored = values_.value(toQString(key));
    if (stored.isString())
        return stored.toString().toStdString();
    const Value* other = fallback(key);
    const std::string* text = other != nullptr ? other->text() : nullptr;
    return text != nullptr ? std::optional(*text) : std::nullopt;
}

void JsonUserDefaults::setObject(std::string_view key, const Value& value) {
    unwritten_.insert(toQString(key), toJson(value));
    values_ = merged(values_, unwritten_);
    write();
    announce();
}

void JsonUserDefaults::write() {
    isWriting_ = true;
    const auto change = [&files = files_, file = file_, values = values_, unwritten = unwritten_,
                         isThere = isThere_](const std::optional<std::string>& text) -> std::optional<std::string> {
        // Keeps what others have written since.
        Content present = parse(file, text);
        if (present.isDamaged) {
            // Its user may want it back. What a link leads to may be anything, so that stays.
            if (!files.setAside(file))
                return std::nullopt;
            present.values = values;
        } else if (!present.isThere && isThere) {
            present.values = values; // set aside just now, and then the writing was interrupted
        }
        return QJsonDocument(merged(present.values, unwritten)).toJson(QJsonDocument::Indented).toStdString();
    };
    files_.update(file_, sizeLimit, change, lifetime_.guard([this, written = unwritten_](std::error_code error) {
        for (auto entry = written.begin(); !error && entry != written.end(); ++entry) {
            if (unwritten_.value(entry.key()) == entry.value())
                unwritten_.remove(entry.key());
        }
        isWriting_ = false;
        fileChanged();
    }));
}

Subscription JsonUserDefaults::onChange(std::function<void()> callback) {
    return observers_.add(std::move(callback));
}

void JsonUserDefaults::fileChanged() {
    // Setting a damaged file aside leaves none for a moment. When the writing is done, this is called again.
    if (isWriting_)
        return;
    watchFile();
    const Content present = parse(file_, files_.read(file_, sizeLimit));
    // A slip in an editor must not reset all settings; our next write repairs the file.
    isThere_ = present.isThere;
    if (present.isDamaged)
        return;
    const QJsonObject values = merged(present.values, unwritten_);
    // Our own write comes back as an event too, and is announced already.
    if (values == values_)
        return;
    values_ = values;
    announce();
}

void JsonUserDefaults::announce() {
    loop_.async(lifetime_.guard([this] { observers_.notify(); }));
}

void JsonUserDefaults::watchFile() {
    watch_.watch({file_, PosixFiles::linkTarget(file_)});
}
