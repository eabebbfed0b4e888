// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/popover/Popover.h"

#include "platform/DesktopWindows.h"
#include "views/style/Accessibility.h"
#include "views/style/KeyboardFocus.h"
#include "views/style/ThinScrollBar.h"
#include "views/style/ViewStyle.h"
#include "views/text/PopoverPlacement.h"

#include <QAbstractButton>
#include <QCursor>
#include <QEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLayout>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>

#include <algorithm>
#include <chrono>
#include <utility>

namespace {

bool isWaylandSession() {
    return !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

/// On plain X11 a popup window closes on a click anywhere. Under Wayland, and on X servers inside it, a click on
/// another program's window never reaches a popup; a tool window that closes when it loses the focus does better there.
Qt::WindowFlags popoverFlags() {
    const bool plainX11 = QGuiApplication::platformName() == QLatin1String("xcb") && !isWaylandSession();
    return plainX11 ? Qt::Popup | Qt::FramelessWindowHint
                    : Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint;
}

ScreenRect toScreenRect(const QRect& rect) {
    return {rect.x(), rect.y(), rect.width(), rect.height()};
}

QScreen* screenAt(std::optional<ScreenPoint> point) {
    QScreen* screen = point ? QGuiApplication::screenAt(QPoint(point->x, point->y)) : nullptr;
    return screen != nullptr ? screen : QGuiApplication::primaryScreen();
}

/// Longer than anybody reads without moving the pointer, and shorter than desktops wait before they lock the screen.
constexpr auto longestLook = std::chrono::minutes(2);

/// The height of the largest window that fits beside the panels.
int largestHeight(const ScreenRect& room) {
    const bool isWayland = QGuiApplication::platformName() == QLatin1String("wayland");
    return room.height - (isWayland ? thickestPanel : 0);
}

constexpr int scrollBarGap = (popoverPadding - ThinScrollBar::thickness) / 2; ///< in the middle of the padding

/// Has everything inside take its font and style, as it would when it is shown.
void polish(const QWidget& widget) {
    widget.ensurePolished();
    for (const QObject* child : widget.children()) {
        if (child->isWidgetType())
            polish(*static_cast<const QWidget*>(child));
    }
}

/// Brings the layouts of everything inside up to date, from the innermost to its own. By themselves they tell each
/// other by events, one level on each turn of the main loop, and the window would be of a wrong height meanwhile.
void updateLayouts(const QWidget& widget) {
    for (const QObject* child : widget.children()) {
        if (child->isWidgetType())
            updateLayouts(*static_cast<const QWidget*>(child));
    }
    if (QLayout* layout = widget.layout())
        layout->activate();
}

} // namespace

/// A line around the card, drawn on top of its content. It is as large as the window, since the edges of a card are on
/// other pixels than those of a widget where these have fractions.
class Popover::Border final : public QWidget {
public:
    explicit Border(QWidget* parent) : QWidget(parent) { setAttribute(Qt::WA_TransparentForMouseEvents); }

    QRect card;

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QColor line = palette().color(QPalette::WindowText);
        if (!hasHighContrast(palette()))
            line.setAlpha(60);
        QPainter painter(this);
        drawOutline(painter, card, window()->testAttribute(Qt::WA_TranslucentBackground) ? cardRadius : 0, line);
    }
};

Popover::Popover(DesktopWindows* desktop)
    : QWidget(nullptr, popoverFlags())
    , desktop_(desktop)
    , area_(new QScrollArea(this))
    , scrollBar_(new ThinScrollBar(area_->verticalScrollBar(), this))
    , border_(new Border(this))
    , keyboardFocus_(new KeyboardFocus(*this)) {
    setAccessibleRole(*this, QAccessible::Dialog);
    setObjectName(QStringLiteral("popover"));
    setWindowTitle(QStringLiteral("Velmora"));
    area_->setFrameShape(QFrame::NoFrame);
    area_->setWidgetResizable(true);
    area_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff); // it would take width from the content
    area_->setFocusPolicy(Qt::NoFocus);
    area_->verticalScrollBar()->setAccessibleName(QStringLiteral("Scroll"));
    useCardColor();
    untilNobodyLooks_.setSingleShot(true);
    untilNobodyLooks_.setInterval(longestLook);
    connect(&untilNobodyLooks_, &QTimer::timeout, this, &Popover::closeUnlessPointerMoves);
}

Popover::~Popover() {
    if (desktop_ != nullptr)
        desktop_->popoverHidden();
}

void Popover::setContent(QWidget* content) {
    area_->setWidget(content);
    // The card shines through, with its round corners.
    content->setAutoFillBackground(false);
    area_->viewport()->setAutoFillBackground(false);
    content->setFocusPolicy(Qt::ClickFocus);
}

void Popover::prepare() {
    if (desktop_ != nullptr && !isVisible())
        desktop_->popoverWanted();
}

void Popover::showAt(std::optional<ScreenPoint> point) {
    if (point && isCredible(*point, isWaylandSession()))
        point_ = point;
    useShadow(desktop_ != nullptr && desktop_->canHaveShadow());
    polish(*this);
    place();
    if (desktop_ != nullptr) {
        winId(); // makes the window
        desktop_->willShowPopover(*windowHandle(), card().translated(pos()), shadow_);
    }
    show();
    // Qt posts an update of each widget. After the window was exposed, and drawn, all of it would be drawn again.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::UpdateLater);
    // A popup has the keyboard and the pointer already, which a screen locker needs for itself.
    if (windowType() == Qt::Popup)
        untilNobodyLooks_.start();
    // Whatever else a popup needs can wait until it is painted.
    if (windowType() == Qt::Popup && !hasSettled_)
        raise();
    else
        settle();
    keyboardFocus_->begin(false);
    // No control has the focus until the user turns to the keyboard.
    if (QWidget* content = area_->widget())
        content->setFocus();
}

void Popover::settle() {
    hasSettled_ = true;
    tellOfPlace();
    raise();          // above what the desktop has put around it, should its place not be the one that was told
    activateWindow(); // a popup has the keyboard without this, unless another program holds that
    pointer_ = QCursor::pos();
}

void Popover::tellOfPlace() {
    if (desktop_ != nullptr && hasSettled_)
        desktop_->popoverShown(*windowHandle(), [this] { hide(); });
}

void Popover::useShadow(bool has) {
    if (isVisible() || has == testAttribute(Qt::WA_TranslucentBackground))
        return;
    destroy(); // transparency belongs to the window from the start
    setAttribute(Qt::WA_TranslucentBackground, has);
    setAttribute(Qt::WA_NoSystemBackground, has); // which the other turns on, but not off
    shadow_ = has ? cardShadow : 0;
}

void Popover::closeUnlessPointerMoves() {
    const QPoint before = std::exchange(pointer_, QCursor::pos());
    if (pointer_ == before)
        hide();
    else
        untilNobodyLooks_.start();
}

void Popover::place() {
    const QScreen* screen = screenAt(point_);
    QWidget* content = area_->widget();
    if (screen == nullptr || content == nullptr)
        return;
    const std::optional<ScreenRect> known = desktop_ != nullptr ? desktop_->freeArea(*screen) : std::nullopt;
    const ScreenRect room = known.value_or(toScreenRect(screen->availableGeometry()));
    content->resize(popoverWidth, content->height()); // first, or the layouts would be made for another width as well
    updateLayouts(*content);
    const int wanted = content->layout()->hasHeightForWidth() ? content->layout()->totalHeightForWidth(popoverWidth)
                                                              : content->sizeHint().height();
    // The fixed size also makes tiling compositors let the window float.
    const QSize size(popoverWidth, std::min(wanted, largestHeight(room)));
    const ScreenPoint corner = placePopover(point_.value_or(usualPlaceOfItem(toScreenRect(screen->geometry()), room)),
                                            room, size.width(), size.height());
    setFixedGeometry(QRect(corner.x, corner.y, size.width(), size.height()).marginsAdded(shadowMargins()));
    area_->setGeometry(card());
    border_->setGeometry(rect());
    border_->card = card();
    const QRect side = card().marginsRemoved({scrollBarGap, scrollBarGap, scrollBarGap, scrollBarGap});
    scrollBar_->setGeometry(isRightToLeft() ? side.left() : side.right() + 1 - ThinScrollBar::thickness, side.top(),
                            ThinScrollBar::thickness, side.height());
    tellOfPlace();
}

void Popover::setFixedGeometry(const QRect& geometry) {
    setMinimumSize(minimumSize().boundedTo(geometry.size()));
    setMaximumSize(maximumSize().expandedTo(geometry.size()));
    setGeometry(geometry);
    setFixedSize(geometry.size());
}

bool Popover::wasJustClosed() const {
    constexpr qint64 sameClickMilliseconds = 250;
    return sinceClosed_.isValid() && sinceClosed_.elapsed() < sameClickMilliseconds;
}

bool Popover::event(QEvent* event) {
    if (event->type() == QEvent::WindowDeactivate)
        hide();
    return QWidget::event(event);
}

void Popover::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) // the desktop's, except for the colour of the card
        useCardColor();
}

void Popover::useCardColor() {
    const QColor wanted = cardColor(QGuiApplication::palette());
    if (palette().color(QPalette::Window) == wanted)
        return;
    QPalette card; // this colour alone, so that all others follow the desktop
    card.setColor(QPalette::Window, wanted);
    setPalette(card);
}

void Popover::keyPressEvent(QKeyEvent* event) {
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    auto* button = qobject_cast<QAbstractButton*>(focusWidget());
    if (event->key() == Qt::Key_Escape)
        hide();
    else if (isEnter && button != nullptr && !event->isAutoRepeat()) // Qt's buttons take the space bar alone
        button->click();
    else
        QWidget::keyPressEvent(event);
}

void Popover::mousePressEvent(QMouseEvent* event) {
    if (card().contains(event->position().toPoint()))
        QWidget::mousePressEvent(event);
    else
        hide(); // a click on the shadow is one beside the card
}

void Popover::paintEvent(QPaintEvent* event) {
    const auto settleNow = [this] {
        if (isVisible() && !hasSettled_)
            settle();
    };
    if (!hasSettled_)
        QMetaObject::invokeMethod(this, settleNow, Qt::QueuedConnection);
    if (shadow_ == 0)
        return; // Qt has drawn the background
    QPainter painter(this);
    constexpr int end = static_cast<int>(cardRadius) + 1;
    if (card().adjusted(0, end, 0, -end).contains(event->rect())) // something in the card has changed
        painter.fillRect(event->rect(), palette().color(QPalette::Window));
    else
        drawFloatingCard(painter, card(), palette());
}

void Popover::hideEvent(QHideEvent* event) {
    sinceClosed_.start();
    hasSettled_ = false;
    untilNobodyLooks_.stop();
    if (desktop_ != nullptr)
        desktop_->popoverHidden();
    Q_EMIT closed();
    QWidget::hideEvent(event);
}
