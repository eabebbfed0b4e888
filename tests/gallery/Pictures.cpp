// SPDX-License-Identifier: GPL-3.0-or-later
#include "gallery/Pictures.h"

#include <QFile>
#include <QImage>
#include <QPixmap>
#include <QSet>

#include <cstdio>
#include <cstdlib>

namespace {

bool showsSomething(const QImage& picture, const QColor& background, double mostDrawn) {
    QSet<QRgb> colors;
    qsizetype drawn = 0;
    for (int y = 0; y < picture.height(); ++y) {
        forEachRun(picture, y, 0, picture.width(), [&](QRgb colour, int length) {
            colors.insert(colour);
            drawn += colour != background.rgb() ? length : 0;
        });
    }
    const double share = static_cast<double>(drawn) / (static_cast<double>(picture.width()) * picture.height());
    return colors.size() > 30 && share > 0.03 && share < mostDrawn;
}

} // namespace

void fail(const char* why, const QString& file) {
    std::fprintf(stderr, "velmora_gallery: %s: %s\n", why, qPrintable(file));
    std::exit(EXIT_FAILURE);
}

QImage keep(QWidget& widget, const QString& file, double mostDrawn) {
    const QImage picture = widget.grab().toImage().convertToFormat(QImage::Format_ARGB32);
    if (!picture.save(file))
        fail("cannot write", file);
    if (!showsSomething(QImage(file).convertToFormat(QImage::Format_ARGB32), widget.palette().color(QPalette::Window),
                        mostDrawn))
        fail("there is nothing to see", file);
    return picture;
}
