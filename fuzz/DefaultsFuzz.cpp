// SPDX-License-Identifier: GPL-3.0-or-later
#include "Target.h"
#include "alerts/AlertEngine.h"
#include "alerts/Prefs.h"
#include "battery/BatteryState.h"
#include "platform/linux/files/JsonUserDefaults.h"
#include "support/FakeCalendar.h"
#include "support/FakeFiles.h"
#include "support/FakeMainLoop.h"
#include "views/text/SettingsForm.h"
#include "views/text/StatusItemText.h"
#include "views/text/TimeText.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QLocale>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <nlohmann/json.hpp>

// An input is the content of the preferences file.

namespace {

using Json = nlohmann::json;

const std::filesystem::path file = "/there is no such folder/Velmora/defaults.json";
const std::filesystem::path aside = "/there is no such folder/Velmora/defaults.json.damaged";

/// One start of the program with that file.
struct Start {
    FakeFiles& files;
    FakeClock clock;
    FakeMainLoop loop{clock};
    JsonUserDefaults store{file, files, loop};

    explicit Start(FakeFiles& theFiles) : files(theFiles) {}
};

/// Finds a number nearer to zero than any double; such a file is refused, like one with a number too large.
struct TinyNumbers final : nlohmann::json_sax<Json> {
    bool found = false;

    bool number_float(double value, const std::string& text) override {
        found = found || (value == 0 && text.find_first_of("123456789") < text.find_first_of("eE"));
        return true;
    }
    bool null() override { return true; }
    bool boolean(bool /*value*/) override { return true; }
    bool number_integer(std::int64_t /*value*/) override { return true; }
    bool number_unsigned(std::uint64_t /*value*/) override { return true; }
    bool string(std::string& /*value*/) override { return true; }
    bool binary(Json::binary_t& /*value*/) override { return true; }
    bool start_object(std::size_t /*count*/) override { return true; }
    bool key(std::string& /*value*/) override { return true; }
    bool end_object() override { return true; }
    bool start_array(std::size_t /*count*/) override { return true; }
    bool end_array() override { return true; }
    bool parse_error(std::size_t /*at*/, const std::string& /*token*/, const Json::exception& /*error*/) override {
        return false;
    }
};

/// A second opinion on the file; empty if it holds no JSON object. It has no limit of depth, and refuses unpaired
/// surrogates.
std::optional<Json> slowlyRead(const std::string& text) {
    if (text.find('\0') != std::string::npos) // this parser takes it for the end
        return std::nullopt;
    TinyNumbers tiny;
    if (Json::sax_parse(text, &tiny) && tiny.found)
        return std::nullopt;
    Json json = Json::parse(text, nullptr, false);
    return json.is_object() ? std::optional(std::move(json)) : std::nullopt;
}

/// The same for the value of a key.
const Json* at(const Json& json, std::string_view key) {
    const auto found = json.find(key);
    return found == json.end() ? nullptr : &*found;
}

std::optional<std::int64_t> wholeNumber(const Json* value) {
    if (value == nullptr || !value->is_number())
        return std::nullopt;
    if (value->is_number_integer() && (!value->is_number_unsigned() || value->get<std::uint64_t>() <= INT64_MAX))
        return value->get<std::int64_t>();
    const auto number = value->get<double>();
    constexpr double limit = 9223372036854775808.0;
    const bool fits = number >= -limit && number < limit && std::trunc(number) == number;
    return fits ? std::optional(static_cast<std::int64_t>(number)) : std::nullopt;
}

/// With every number that no 64-bit integer holds as a double, which is how it is stored.
Json asKept(Json json) {
    if (json.is_structured())
        for (Json& part : json)
            part = asKept(std::move(part));
    const bool isTooLarge = json.is_number_unsigned() && json.get<std::uint64_t>() > INT64_MAX;
    return isTooLarge ? Json(json.get<double>()) : json;
}

void checkValues(const JsonUserDefaults& store, const Json& json) {
    for (const auto& [key, fallback] : Prefs::defaults()) {
        const Json* value = at(json, key);
        if (const auto flag = fallback.boolean())
            require(store.boolForKey(key) == (value != nullptr && value->is_boolean() ? value->get<bool>() : *flag),
                    "a switch is as it is stored, or as nobody changed it");
        else if (const auto number = fallback.integer())
            require(store.integerForKey(key) == wholeNumber(value).value_or(*number),
                    "a number is as it is stored, or as nobody changed it");
        else
            require(store.stringForKey(key) ==
                        (value != nullptr && value->is_string() ? value->get<std::string>() : *fallback.text()),
                    "a text is as it is stored, or as nobody changed it");
    }
    const Json* until = at(json, "snoozeUntil");
    require(store.doubleForKey("snoozeUntil") == (until != nullptr && until->is_number() ? until->get<double>() : 0),
            "an instant is as it is stored");
}

/// What the program does with preferences, whatever their values.
void use(Start& start) {
    const Prefs prefs = Prefs::current(start.store);
    require(prefs == Prefs::current(start.store), "what nobody changes stays");
    require(prefs.sounds.size() == allAlertKinds.size(), "every reminder has a sound");
    const FakeCalendar calendar;
    (void)prefs.inQuietHours(start.clock.now(), calendar);
    if (const auto until = Prefs::snoozeUntil(start.store, start.clock)) {
        require(std::isfinite(until->time_since_epoch().count()), "a snooze ends");
        (void)shortTime(*until, QLocale::c());
    }
    for (const std::int64_t minutes : {prefs.quietStart, prefs.quietEnd})
        if (const auto time = timeOfMinutes(minutes))
            require(time->hour * 60 + time->minute == minutes && time->hour < 24, "a time of day is one");
    for (const SettingsSection& section : settingsSections())
        for (const SettingsControl& control : section.controls)
            if (control.kind == SettingsControl::Kind::stepper)
                require(!stepperLabel(control, start.store.integerForKey(control.key)).empty(), "a number has a label");
    AlertEngine engine;
    BatteryState state;
    state.hasBattery = true;
    for (const std::int64_t percent : {0, 50, 100}) {
        for (const bool pluggedIn : {false, true}) {
            state.percent = percent;
            state.pluggedIn = pluggedIn;
            const Date now = start.clock.now();
            for (const PendingAlert& alert :
                 engine.run(state, now - Duration(1e6), now, prefs, true, false, start.store))
                require(!alert.title.empty() && !alert.body.empty(), "a reminder says something");
            (void)statusItemTitle(state, prefs);
        }
    }
}

void checkWriting(FakeFiles& files, const std::string& text, bool isObject, const std::optional<Json>& json) {
    Start start(files);
    const Prefs before = Prefs::current(start.store);
    start.store.setObject("low", 77);
    require(start.store.integerForKey("low") == 77, "what was set is there");
    start.loop.runDue();
    const auto written = slowlyRead(files.files[file]);
    if (!isObject) {
        require(files.files[aside] == text, "what cannot be read is set aside as it is");
        require(written == Json{{"low", 77}}, "nothing is made up");
    } else {
        require(!files.files.contains(aside), "what can be read is not set aside");
    }
    if (isObject && json) {
        Json wanted = *json;
        wanted["low"] = 77;
        require(written && asKept(*written) == asKept(wanted), "what others have written is kept");
    }
    Start next(files);
    Prefs after = Prefs::current(next.store);
    require(after.low == 77, "what was written is read at the next start");
    after.low = before.low;
    require(after == before, "and the rest as it was");
}

bool isQtObject(const std::string& text) {
    return QJsonDocument::fromJson(QByteArray(text.data(), static_cast<qsizetype>(text.size()))).isObject();
}

/// Whether there is a byte order mark anywhere but at the beginning. Qt drops one that begins a key or a value, unless
/// it is written as an escape; so such texts may change when they are written again.
bool hasInnerMark(const std::string& text) {
    std::string lower = text;
    std::ranges::transform(lower, lower.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c; });
    return text.find("\xEF\xBB\xBF", 1) != std::string::npos || lower.find("\\ufeff") != std::string::npos;
}

} // namespace

/// Replaces the C library's: there is no folder to watch, and the kernel takes milliseconds to end each watch.
extern "C" int inotify_init1(int /*flags*/) noexcept {
    errno = EMFILE;
    return -1;
}

std::optional<bool> isTaken(const std::string& text) {
    return isQtObject(text);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // Its arguments are looked at again later.
    static int count = 1;
    static char name[] = "fuzz";
    static char* arguments[] = {name, nullptr};
    static const QCoreApplication application(count, arguments); // QSocketNotifier, which FolderWatch uses, needs one
    const std::string text(data, data + size);
    const auto json = slowlyRead(text);
    const bool isObject = isQtObject(text);
    constexpr std::ptrdiff_t deepest = 500;
    const bool isDeep = std::ranges::count_if(text, [](char c) { return c == '[' || c == '{'; }) > deepest;
    if (json && !isDeep)
        require(isObject, "what another parser reads is read");
    FakeFiles files;
    files.files[file] = text;
    {
        Start start(files);
        use(start);
        if (hasInnerMark(text))
            return 0;
        if (json && isObject)
            checkValues(start.store, *json);
    }
    files.files = {{file, text}};
    checkWriting(files, text, isObject, json);
    return 0;
}
