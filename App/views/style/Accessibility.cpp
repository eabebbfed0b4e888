// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/style/Accessibility.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QAccessibleObject>
#include <QAccessibleWidget>
#include <QApplication>
#include <QLineEdit>
#include <QVariant>
#include <QWindow>

#include <algorithm>

namespace {

constexpr const char* roleProperty = "accessibleRole";
constexpr const char* wholeProperty = "accessibleWhole";
constexpr const char* valueProperty = "accessibleValue";
constexpr const char* expandedProperty = "accessibleExpanded";

/// A widget of ours as it has been told to be presented.
class PresentedWidget final : public QAccessibleWidget {
public:
    PresentedWidget(QWidget* presented, QAccessible::Role role) : QAccessibleWidget(presented, role) {}

    int childCount() const override { return isWhole() ? 0 : QAccessibleWidget::childCount(); }
    QAccessibleInterface* child(int index) const override {
        return isWhole() ? nullptr : QAccessibleWidget::child(index);
    }
    QString text(QAccessible::Text kind) const override {
        if (kind == QAccessible::Value && property(valueProperty).isValid())
            return property(valueProperty).toString();
        const auto* button = asButton();
        if (kind == QAccessible::Name && button != nullptr && button->accessibleName().isEmpty())
            return button->text();
        return QAccessibleWidget::text(kind);
    }
    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        if (const QVariant isExpanded = property(expandedProperty); isExpanded.isValid()) {
            state.expandable = true;
            state.expanded = isExpanded.toBool();
            state.collapsed = !isExpanded.toBool();
        } else if (const auto* button = asButton(); button != nullptr && button->isCheckable()) {
            state.checkable = true;
            state.checked = button->isChecked();
        }
        return state;
    }
    QStringList actionNames() const override {
        return (asButton() != nullptr ? QStringList{pressAction()} : QStringList()) + QAccessibleWidget::actionNames();
    }
    void doAction(const QString& name) override {
        if (auto* button = asButton(); button != nullptr && name == pressAction())
            button->click();
        else
            QAccessibleWidget::doAction(name);
    }
    /// A field's text is that of the line in it.
    void* interface_cast(QAccessible::InterfaceType type) override {
        const auto* line = widget()->findChild<QLineEdit*>();
        const bool isOfText = type == QAccessible::TextInterface || type == QAccessible::EditableTextInterface;
        if (isOfText && line != nullptr)
            return QAccessible::queryAccessibleInterface(const_cast<QLineEdit*>(line))->interface_cast(type);
        return QAccessibleWidget::interface_cast(type);
    }

private:
    QVariant property(const char* name) const { return widget()->property(name); }
    bool isWhole() const { return property(wholeProperty).toBool(); }
    QAbstractButton* asButton() const { return qobject_cast<QAbstractButton*>(widget()); }
};

/// The program, whose children are its windows.
class PresentedProgram final : public QAccessibleObject {
public:
    using QAccessibleObject::QAccessibleObject;

    QAccessibleInterface* parent() const override { return nullptr; }
    int childCount() const override { return static_cast<int>(windows().size()); }
    QAccessibleInterface* child(int index) const override { return windows().value(index); }
    int indexOfChild(const QAccessibleInterface* child) const override {
        const auto all = windows();
        const auto found =
            std::find_if(all.begin(), all.end(), [&](auto* each) { return each->object() == child->object(); });
        return found == all.end() ? -1 : static_cast<int>(found - all.begin());
    }
    QAccessibleInterface* focusChild() const override {
        return QAccessible::queryAccessibleInterface(QGuiApplication::focusObject());
    }
    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Name ? QGuiApplication::applicationName() : QString();
    }
    QAccessible::Role role() const override { return QAccessible::Application; }
    QAccessible::State state() const override {
        QAccessible::State state;
        state.active = QGuiApplication::focusWindow() != nullptr;
        return state;
    }
    QWindow* window() const override { return nullptr; }

private:
    static QList<QAccessibleInterface*> windows() {
        QList<QAccessibleInterface*> found;
        for (const QWindow* window : QGuiApplication::topLevelWindows()) {
            QAccessibleInterface* root = window->accessibleRoot();
            // Menus and lists that pop up belong to what they popped up from.
            if (root != nullptr && root->object() != nullptr && window->type() != Qt::Desktop &&
                (window->type() != Qt::Popup || root->object()->property(roleProperty).isValid()))
                found.append(root);
        }
        return found;
    }
};

QAccessibleInterface* presented(const QString& /*className*/, QObject* object) {
    if (object == QCoreApplication::instance())
        return new PresentedProgram(object);
    const QVariant role = object != nullptr && object->isWidgetType() ? object->property(roleProperty) : QVariant();
    return role.isValid() ? new PresentedWidget(static_cast<QWidget*>(object), role.value<QAccessible::Role>())
                          : nullptr;
}

} // namespace

void setAccessibleRole(QWidget& widget, QAccessible::Role role) {
    QAccessible::installFactory(&presented); // once, however often it is called
    widget.setProperty(roleProperty, QVariant::fromValue(role));
    // Some of Qt's constructors and setters have one made already, in the usual role.
    QAccessible::deleteAccessibleInterface(QAccessible::uniqueId(QAccessible::queryAccessibleInterface(&widget)));
}

void setAccessibleWhole(QWidget& widget, QAccessible::Role role) {
    setAccessibleRole(widget, role);
    widget.setProperty(wholeProperty, true);
}

void setAccessibleValue(QWidget& widget, const QString& value) {
    if (widget.property(valueProperty).toString() == value)
        return;
    widget.setProperty(valueProperty, value);
    QAccessibleValueChangeEvent event(&widget, value);
    QAccessible::updateAccessibility(&event);
}

void setAccessibleExpanded(QWidget& widget, bool isExpanded) {
    widget.setProperty(expandedProperty, isExpanded);
    QAccessible::State changed;
    changed.expanded = true;
    QAccessibleStateChangeEvent event(&widget, changed);
    QAccessible::updateAccessibility(&event);
}
