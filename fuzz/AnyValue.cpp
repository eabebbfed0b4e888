// SPDX-License-Identifier: GPL-3.0-or-later
#include "AnyValue.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QStringList>

#include <cstring>

std::uint64_t Bytes::number() {
    // Mostly small numbers, because those have a meaning.
    if (flag())
        return static_cast<std::uint64_t>(below(8)) - 2;
    std::uint64_t all = 0;
    for (int i = 0; i < 8; ++i)
        all = all << 8U | next();
    return all;
}

double Bytes::fraction() {
    if (flag())
        return next() / 64.0;
    const std::uint64_t bits = number();
    double all = 0;
    std::memcpy(&all, &bits, sizeof all);
    return all;
}

QString Bytes::text() {
    static const char* const known[] = {"",
                                        "org.freedesktop.appearance",
                                        "org.gnome.desktop.interface",
                                        "color-scheme",
                                        "accent-color",
                                        "font-name",
                                        "text-scaling-factor",
                                        "gtk-theme",
                                        "Cantarell Bold 11",
                                        "Adwaita-dark",
                                        "org.freedesktop.UPower.PowerProfiles",
                                        "net.hadess.PowerProfiles",
                                        "ActiveProfile",
                                        "power-saver",
                                        "balanced",
                                        "dunst",
                                        "mako",
                                        "gnome-shell",
                                        "Plasma",
                                        "Xfce Notify Daemon",
                                        "actions",
                                        "body-markup",
                                        "sound",
                                        "do-not-disturb",
                                        "clicked",
                                        "label",
                                        "enabled",
                                        "activation-token",
                                        "org.kde.StatusNotifierItem",
                                        "ToolTip",
                                        "IconPixmap",
                                        "snooze"};
    const int which = below(static_cast<int>(std::size(known)) + 8);
    if (which < static_cast<int>(std::size(known)))
        return QString::fromLatin1(known[which]);
    QString other;
    for (int length = below(12); length > 0; --length) {
        const std::uint8_t byte = next();
        other +=
            byte == 0 ? QChar(0x1F50) : QChar::fromLatin1(static_cast<char>(byte)); // a D-Bus string cannot hold a zero
    }
    return other;
}

AnyValue AnyValue::of(Bytes& bytes, int depth) {
    constexpr int plain = 10;
    constexpr int all = 15;
    switch (bytes.below(depth < 3 ? all : plain)) {
    case 0:
        return {.value = bytes.flag(), .color = {}};
    case 1:
        return {.value = static_cast<int>(bytes.number()), .color = {}};
    case 2:
        return {.value = static_cast<uint>(bytes.number()), .color = {}};
    case 3:
        return {.value = static_cast<qlonglong>(bytes.number()), .color = {}};
    case 4:
        return {.value = bytes.fraction(), .color = {}};
    case 5:
        return {.value = QVariant::fromValue(static_cast<uchar>(bytes.next())), .color = {}};
    case 6:
        return {.value = QVariant::fromValue(static_cast<short>(bytes.number())), .color = {}};
    case 7:
        return {.value = QByteArray(bytes.below(5), 'b'), .color = {}};
    case 8:
        return {.value = QVariant::fromValue(QDBusObjectPath(QStringLiteral("/a"))), .color = {}};
    case 9:
        return {.value = bytes.text(), .color = {}};
    case 10: {
        QStringList list;
        for (int count = bytes.below(4); count > 0; --count)
            list += bytes.text();
        return {.value = list, .color = {}};
    }
    case 11: {
        QVariantList list;
        for (int count = bytes.below(4); count > 0; --count)
            list += of(bytes, depth + 1).value;
        return {.value = list, .color = {}};
    }
    case 12: {
        QVariantMap map;
        for (int count = bytes.below(4); count > 0; --count) {
            const QString key = bytes.text();
            map.insert(key, of(bytes, depth + 1).value);
        }
        return {.value = map, .color = {}};
    }
    case 13:
        return {.value = QVariant::fromValue(QDBusVariant(of(bytes, depth + 1).value)), .color = {}};
    default: {
        const std::array<double, 3> color{bytes.fraction(), bytes.fraction(), bytes.fraction()};
        const bool isWhole = bytes.next() != 1;
        QDBusArgument argument;
        argument.beginStructure();
        argument << color[0] << color[1];
        if (isWhole)
            argument << color[2];
        argument.endStructure();
        return {.value = QVariant::fromValue(argument), .color = isWhole ? std::optional(color) : std::nullopt};
    }
    }
}

QVariantList anyValues(Bytes& bytes) {
    QVariantList all;
    for (int count = bytes.below(5); count > 0; --count)
        all += AnyValue::of(bytes).value;
    return all;
}
