// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/panel/StatusNotifierObject.h"

#include "platform/linux/panel/StatusNotifierItem.h"
#include "platform/linux/windows/ActivationToken.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QMetaProperty>

namespace {

constexpr QLatin1String description(R"xml(<interface name="org.kde.StatusNotifierItem">
  <property name="Category" type="s" access="read"/>
  <property name="Id" type="s" access="read"/>
  <property name="Title" type="s" access="read"/>
  <property name="Status" type="s" access="read"/>
  <property name="WindowId" type="i" access="read"/>
  <property name="IconAccessibleDesc" type="s" access="read"/>
  <property name="AttentionAccessibleDesc" type="s" access="read"/>
  <property name="IconName" type="s" access="read"/>
  <property name="IconThemePath" type="s" access="read"/>
  <property name="IconPixmap" type="a(iiay)" access="read"/>
  <property name="OverlayIconName" type="s" access="read"/>
  <property name="OverlayIconPixmap" type="a(iiay)" access="read"/>
  <property name="AttentionIconName" type="s" access="read"/>
  <property name="AttentionIconPixmap" type="a(iiay)" access="read"/>
  <property name="AttentionMovieName" type="s" access="read"/>
  <property name="ToolTip" type="(sa(iiay)ss)" access="read"/>
  <property name="ItemIsMenu" type="b" access="read"/>
  <property name="Menu" type="o" access="read"/>
  <property name="XAyatanaLabel" type="s" access="read"/>
  <property name="XAyatanaLabelGuide" type="s" access="read"/>
  <property name="XAyatanaOrderingIndex" type="u" access="read"/>
  <method name="Activate">
    <arg name="x" type="i" direction="in"/>
    <arg name="y" type="i" direction="in"/>
  </method>
  <method name="SecondaryActivate">
    <arg name="x" type="i" direction="in"/>
    <arg name="y" type="i" direction="in"/>
  </method>
  <method name="ContextMenu">
    <arg name="x" type="i" direction="in"/>
    <arg name="y" type="i" direction="in"/>
  </method>
  <method name="Scroll">
    <arg name="delta" type="i" direction="in"/>
    <arg name="orientation" type="s" direction="in"/>
  </method>
  <method name="ProvideXdgActivationToken">
    <arg name="token" type="s" direction="in"/>
  </method>
  <method name="XAyatanaSecondaryActivate">
    <arg name="timestamp" type="u" direction="in"/>
  </method>
  <signal name="NewTitle"/>
  <signal name="NewIcon"/>
  <signal name="NewAttentionIcon"/>
  <signal name="NewOverlayIcon"/>
  <signal name="NewToolTip"/>
  <signal name="NewMenu"/>
  <signal name="NewStatus">
    <arg name="status" type="s"/>
  </signal>
  <signal name="NewIconThemePath">
    <arg name="path" type="s"/>
  </signal>
  <signal name="XAyatanaNewLabel">
    <arg name="label" type="s"/>
    <arg name="guide" type="s"/>
  </signal>
</interface>
)xml");

constexpr QLatin1String propertiesName("org.freedesktop.DBus.Properties");

/// The property of the protocol that has this name; invalid if there is none.
QMetaProperty propertyOf(const QString& name) {
    const QMetaObject& type = StatusNotifierItem::staticMetaObject;
    const int index = type.indexOfProperty(name.toLatin1());
    return index < type.propertyOffset() ? QMetaProperty() : type.property(index);
}

} // namespace

QString StatusNotifierObject::introspect(const QString& /*path*/) const {
    return description;
}

bool StatusNotifierObject::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    QDBusMessage answer;
    if (message.interface() == propertiesName)
        answer = answerAboutProperties(message);
    else if ((message.interface().isEmpty() || message.interface() == StatusNotifierItem::interface) && take(message))
        answer = message.createReply();
    else
        return false; // QtDBus answers: introspection, or an error
    if (message.isReplyRequired())
        connection.send(answer);
    return true;
}

QDBusMessage StatusNotifierObject::answerAboutProperties(const QDBusMessage& call) const {
    const QVariantList arguments = call.arguments();
    const QString wanted = call.signature().startsWith(QLatin1Char('s')) ? arguments.at(0).toString() : QString();
    if (!wanted.isEmpty() && wanted != StatusNotifierItem::interface)
        return call.createErrorReply(QDBusError::UnknownInterface, wanted);
    if (call.member() == QLatin1String("Get") && call.signature() == QLatin1String("ss")) {
        const QVariant value = propertyOf(arguments.at(1).toString()).read(&item_);
        if (value.isValid())
            return call.createReply(QVariant::fromValue(QDBusVariant(value)));
        return call.createErrorReply(QDBusError::UnknownProperty, arguments.at(1).toString());
    }
    if (call.member() == QLatin1String("GetAll") && call.signature() == QLatin1String("s")) {
        QVariantMap values;
        const QMetaObject& type = StatusNotifierItem::staticMetaObject;
        for (int index = type.propertyOffset(); index < type.propertyCount(); ++index) {
            const QVariant value = type.property(index).read(&item_);
            if (value.isValid())
                values.insert(QString::fromLatin1(type.property(index).name()), value);
        }
        return call.createReply(values);
    }
    if (call.member() == QLatin1String("Set"))
        return call.createErrorReply(QDBusError::PropertyReadOnly, call.member());
    return call.createErrorReply(QDBusError::UnknownMethod, call.member());
}

bool StatusNotifierObject::take(const QDBusMessage& call) {
    const QVariantList arguments = call.arguments();
    const auto is = [&](const char* member, const char* signature) {
        return call.member() == QLatin1String(member) && call.signature() == QLatin1String(signature);
    };
    if (is("Activate", "ii") || is("SecondaryActivate", "ii"))
        item_.activate(arguments[0].toInt(), arguments[1].toInt());
    else if (is("XAyatanaSecondaryActivate", "u"))
        item_.activate();
    else if (is("ContextMenu", "ii"))
        item_.showMenu(arguments[0].toInt(), arguments[1].toInt());
    else if (is("ProvideXdgActivationToken", "s"))
        takeActivationToken(arguments[0].toString());
    else
        return is("Scroll", "is"); // turning the wheel means nothing here
    return true;
}
