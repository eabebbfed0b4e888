// SPDX-License-Identifier: GPL-3.0-or-later
#include "Target.h"
#include "platform/GlyphName.h"
#include "platform/linux/appearance/AppearanceSettings.h"
#include "platform/linux/notifications/NotificationConsent.h"
#include "platform/linux/notifications/NotificationPlan.h"
#include "platform/linux/panel/DevicePoint.h"
#include "platform/linux/panel/PanelHost.h"
#include "platform/linux/power/PowerProfileChoice.h"
#include "support/FakeFiles.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <map>
#include <sstream>
#include <string_view>
#include <vector>

// An input is single words and numbers that a desktop sends, in lines such as "font=Cantarell 11".

namespace {

/// The lines by their first word, each of which may occur several times.
using Lines = std::multimap<std::string, std::string, std::less<>>;

Lines linesOf(const std::string& text) {
    Lines lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        if (const std::size_t equals = line.find('='); equals != std::string::npos)
            lines.emplace(line.substr(0, equals), line.substr(equals + 1));
    return lines;
}

std::optional<std::string> word(const Lines& lines, std::string_view key) {
    const auto found = lines.find(key);
    return found == lines.end() ? std::nullopt : std::optional(found->second);
}

std::vector<std::string> words(const Lines& lines, std::string_view key) {
    std::vector<std::string> all;
    for (auto [at, end] = lines.equal_range(key); at != end; ++at)
        all.push_back(at->second);
    return all;
}

/// The numbers in a text, whatever is between them; zeros if there are too few.
template <class Number, std::size_t count>
std::array<Number, count> numbers(const std::string& text) {
    std::array<Number, count> all{};
    const char* at = text.data();
    const char* const end = at + text.size();
    for (Number& number : all) {
        std::from_chars_result result{at, std::errc::invalid_argument};
        while (at < end && result.ec == std::errc::invalid_argument) {
            result = std::from_chars(at, end, number);
            at = result.ec == std::errc::invalid_argument ? at + 1 : result.ptr;
        }
    }
    return all;
}

void checkAppearance(const Lines& lines) {
    DesktopSettings settings;
    if (const auto scheme = word(lines, "scheme"))
        settings.colorScheme = numbers<std::uint32_t, 1>(*scheme)[0];
    if (const auto accent = word(lines, "accent"))
        settings.accentColor = numbers<double, 3>(*accent);
    if (const auto scale = word(lines, "scale"))
        settings.textScale = numbers<double, 1>(*scale)[0];
    settings.fontName = word(lines, "font");
    settings.themeName = word(lines, "theme");
    const Appearance appearance = appearanceOf(settings);
    require(appearance == appearanceOf(settings), "the same settings look the same");
    const std::uint32_t scheme = settings.colorScheme.value_or(0);
    if (scheme == 1 || scheme == 2)
        require(appearance.isDark == (scheme == 1), "what is said outright counts");
    if (appearance.accent)
        for (const double part : *appearance.accent)
            require(part >= 0 && part <= 1, "a colour is one");
    if (appearance.font) {
        require(!appearance.font->family.empty() && settings.fontName->starts_with(appearance.font->family),
                "the family is what the description begins with");
        require(appearance.font->points == 0 || (appearance.font->points >= 4 && appearance.font->points <= 72),
                "a font can be read");
    }
    const std::string desktops = word(lines, "desktops").value_or("");
    const std::string choice = word(lines, "choice").value_or("");
    if (!choice.empty())
        require(!refusesQtPlatformTheme(desktops, choice) && !followsPortal(desktops, choice),
                "the user's choice counts");
}

std::string unescaped(std::string text) {
    for (const auto& [escape, character] : {std::pair("&lt;", "<"), {"&gt;", ">"}, {"&amp;", "&"}})
        for (std::size_t at = 0; (at = text.find(escape, at)) != std::string::npos; ++at)
            text.replace(at, std::string_view(escape).size(), character);
    return text;
}

void checkNotification(const Lines& lines) {
    const std::string name = word(lines, "server").value_or("");
    const auto capabilities = words(lines, "capability");
    const NotificationServer server = notificationServer(name, capabilities);
    const auto can = [&](const char* what) { return std::ranges::find(capabilities, what) != capabilities.end(); };
    require(server.takesActions == can("actions") && server.parsesBody == can("body-markup"),
            "a server can do what it says");

    NotificationCenter::Request request;
    request.identifier = word(lines, "id").value_or("low");
    request.body = word(lines, "body").value_or("");
    request.sound = word(lines, "sound");
    const std::vector<NotificationCenter::Action> actions{{"snooze", word(lines, "action").value_or("Snooze")}};
    const auto file = word(lines, "file");
    const SoundFile soundFile = [&](std::string_view) {
        return file ? std::optional<std::filesystem::path>(*file) : std::nullopt;
    };
    for (const std::optional<bool> quiet : {std::optional<bool>(), std::optional(false), std::optional(true)}) {
        const NotificationPlan plan = planNotification(server, quiet, request, actions, soundFile);
        require(plan == planNotification(server, quiet, request, actions, soundFile), "the same plan every time");
        if (server.parsesBody)
            require(plan.body.find_first_of("<>") == std::string::npos && unescaped(plan.body) == request.body,
                    "a body has no markup, and says what it said");
        else
            require(plan.body == request.body, "a plain body is left alone");
        require(plan.actions.size() == (server.takesActions ? 2 : 0), "buttons come where they are taken");
        require(plan.urgency != NotificationUrgency::critical || (request.identifier == "low" && quiet == false),
                "only a low battery insists, and only where it may");
        require(!plan.soundFile || std::filesystem::path(*plan.soundFile).is_absolute(), "a file is found by its path");
        require(!(plan.soundFile && plan.soundName), "one sound at a time");
        require(request.sound || (!plan.soundFile && !plan.soundName && !plan.playsSound), "silence is silent");
        require(quiet != true || !plan.playsSound, "we are quiet where the user wants it");
    }
    const DoNotDisturbQuestion question = doNotDisturbQuestion(doNotDisturbSource(name));
    require(!question.path.empty() && !question.method.empty(), "there is something to ask");
}

void checkPoint(const Lines& lines) {
    const auto [x, y] = numbers<int, 2>(word(lines, "point").value_or(""));
    std::vector<ScreenArea> screens;
    for (const std::string& text : words(lines, "screen")) {
        const auto parts = numbers<std::int64_t, 5>(text);
        const auto within = [&](std::size_t i, std::int64_t least, std::int64_t most) {
            return static_cast<int>(std::clamp(parts[i], least, most));
        };
        screens.push_back({.x = within(0, -65536, 65535),
                           .y = within(1, -65536, 65535),
                           .width = within(2, 1, 16384),
                           .height = within(3, 1, 16384),
                           .scale = static_cast<double>(within(4, 1, 40)) / 4});
    }
    ScreenPoint wanted{x, y};
    for (const ScreenArea& screen : screens) {
        const auto fits = [&](std::int64_t at, std::int64_t corner, std::int64_t size) {
            return at >= corner && static_cast<double>(at - corner) < static_cast<double>(size) * screen.scale;
        };
        if (fits(x, screen.x, screen.width) && fits(y, screen.y, screen.height)) {
            wanted = {screen.x + static_cast<int>((x - screen.x) / screen.scale),
                      screen.y + static_cast<int>((y - screen.y) / screen.scale)};
            break;
        }
    }
    require(toLogical({x, y}, screens) == wanted, "a point is counted in the pixels of its screen");
}

void checkRest(const Lines& lines, const std::string& text) {
    const PanelHost host = panelHost(text);
    require(!host.premultiplied || !host.recolours, "a panel that draws pictures does not draw names");
    const std::string icon = glyphIconName(text);
    require(icon.find('.') == std::string::npos && icon.size() == text.size() + 17, "the name of an icon has no point");

    PowerProfileChoice choice;
    if (const auto profile = word(lines, "new"))
        choice.daemons.emplace(PowerProfileChoice::newName, *profile);
    if (const auto profile = word(lines, "old"))
        choice.daemons.emplace(PowerProfileChoice::oldName, *profile);
    choice.firmware = word(lines, "firmware");
    const auto daemon = word(lines, "new") ? word(lines, "new") : word(lines, "old");
    require(!daemon || choice.isLowPower() == (daemon == "power-saver"), "a daemon is believed");

    FakeFiles files;
    files.files["/state/notifications"] = text;
    const bool isGiven =
        NotificationConsent(files, "/state").status() == NotificationCenter::AuthorizationStatus::authorized;
    require(isGiven == (text == "authorized\n"), "nothing but consent is consent");
}

} // namespace

std::optional<bool> isTaken(const std::string& /*text*/) {
    return std::nullopt; // no input is refused as a whole
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(data, data + size);
    const Lines lines = linesOf(text);
    checkAppearance(lines);
    checkNotification(lines);
    checkPoint(lines);
    checkRest(lines, text);
    return 0;
}
