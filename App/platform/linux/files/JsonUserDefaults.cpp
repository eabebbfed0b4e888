// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/files/JsonUserDefaults.h"

#include "platform/MainLoop.h"
#include "platform/linux/files/PosixFiles.h"
#include "platform/qt/Text.h"

#include <QJsonDocument>

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <chrono>
#include <cmath>
#include <thread>
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

/// Keeps other processes of ours from writing. It locks the folder itself, so no lock file is left lying about. It
/// waits up to five seconds, because on a busy machine a process that writes again and again hardly lets go between two
/// writes; after that, and on file systems without locks, the write goes ahead without it.
class FolderLock {
public:
    explicit FolderLock(const fs::path& folder)
        : descriptor_(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
        using namespace std::chrono_literals;
        const auto limit = std::chrono::steady_clock::now() + 5s;
        while (descriptor_ && ::flock(descriptor_.get(), LOCK_EX | LOCK_NB) != 0) {
            if ((errno != EWOULDBLOCK && errno != EINTR) || std::chrono::steady_clock::now() > limit)
                return;
            std::this_thread::sleep_for(1ms);
        }
    }

private:
    FileDescriptor descriptor_;
};

} // namespace

JsonUserDefaults::JsonUserDefaults(fs::path file, Files& files, MainLoop& loop)
    : file_(std::move(file))
    , files_(files)
    , loop_(loop)
    , watch_([this] { fileChanged(); }) {
    // So that this folder is watched from the start, and not the busy one above it.
    files_.createFolder(file_.parent_path());
    watchFile();
    values_ = load().values;
}

JsonUserDefaults::~JsonUserDefaults() {
    // The disk may have been full when the user chose it, and have room by now.
    if (!unwritten_.isEmpty())
        write();
}

JsonUserDefaults::Content JsonUserDefaults::load() const {
    const auto text = files_.read(file_, sizeLimit);
    std::error_code error;
    if (!text)
        return {.values = {}, .isDamaged = fs::exists(fs::status(file_, error))};
    const auto document =
        QJsonDocument::fromJson(QByteArray::fromRawData(text->data(), static_cast<qsizetype>(text->size())));
    return {.values = document.object(), .isDamaged = !document.isObject()};
}

QJsonObject JsonUserDefaults::withUnwritten(QJsonObject values) const {
    for (auto entry = unwritten_.begin(); entry != unwritten_.end(); ++entry)
        values.insert(entry.key(), entry.value());
    return values;
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

void JsonUserDefaults::setDamagedAside() {
    fs::path aside = file_;
    aside += ".damaged";
    if (const auto content = files_.read(file_, sizeLimit)) {
        // If this fails, so will the write of the new content, and the damaged file stays.
        static_cast<void>(files_.replace(aside, *content));
        return;
    }
    // It cannot be copied: it is a folder, huge, or not ours to read.
    std::error_code error;
    fs::rename(PosixFiles::linkTarget(file_), aside, error);
}

void JsonUserDefaults::setObject(std::string_view key, const Value& value) {
    unwritten_.insert(toQString(key), toJson(value));
    write();
    announce();
}

void JsonUserDefaults::write() {
    files_.createFolder(file_.parent_path());
    const FolderLock lock(file_.parent_path());
    // Keeps what others have written since.
    Content present = load();
    if (present.isDamaged) {
        setDamagedAside();
        present.values = values_;
    }
    values_ = withUnwritten(present.values);
    const QByteArray text = QJsonDocument(values_).toJson(QJsonDocument::Indented);
    if (!files_.replace(file_, {text.constData(), static_cast<std::size_t>(text.size())}))
        unwritten_ = {};
    watchFile();
}

Subscription JsonUserDefaults::onChange(std::function<void()> callback) {
    return observers_.add(std::move(callback));
}

void JsonUserDefaults::fileChanged() {
    watchFile();
    const Content present = load();
    // A slip in an editor must not reset all settings; our next write repairs the file.
    if (present.isDamaged)
        return;
    const QJsonObject values = withUnwritten(present.values);
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
