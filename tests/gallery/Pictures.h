// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QString>
#include <QWidget>

/// Ends the program with a failure.
[[noreturn]] void fail(const char* why, const QString& file);

/// Writes a picture of the widget, and returns it. Fails when the picture shows nothing: text and lines give it more
/// than a few colours, and at least 3 % and at most `mostDrawn` of its pixels must differ from the background colour.
QImage keep(QWidget& widget, const QString& file, double mostDrawn);

/// Calls `found` with the colour and the length of each run of equal pixels between two columns of a line.
template <class Found>
void forEachRun(const QImage& picture, int y, int begin, int end, const Found& found) {
    const auto* line = reinterpret_cast<const QRgb*>(picture.constScanLine(y)); // 32 bits a pixel, as `keep` returns
    while (begin < end) {
        int next = begin + 1;
        while (next < end && line[next] == line[begin])
            ++next;
        found(line[begin], next - begin);
        begin = next;
    }
}
