// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

/// The desktop's notifications. To be called on the main thread; no call waits for the desktop. Answers and calls to
/// the delegate may arrive on any thread. Nothing reports whether a notification was shown.
class NotificationCenter {
public:
    virtual ~NotificationCenter() = default;

    /// A button of a notification.
    struct Action {
        std::string identifier; ///< passed to `Delegate::didReceive`
        std::string title;      ///< the button's text
        bool operator==(const Action&) const = default;
    };

    /// A kind of notification, with its buttons.
    struct Category {
        std::string identifier;      ///< how requests refer to it
        std::vector<Action> actions; ///< in the order shown
        bool operator==(const Category&) const = default;
    };

    /// One notification. It replaces one with the same identifier that is still shown.
    struct Request {
        std::string identifier;           ///< for replacing and withdrawing it
        std::string title;                ///< plain text, one line
        std::string body;                 ///< plain text
        std::string categoryIdentifier;   ///< the category whose buttons it gets; an unknown one gives no buttons
        std::optional<std::string> sound; ///< "default" or a name of `SystemSounds`; silent when empty
        bool operator==(const Request&) const = default;
    };

    /// Whether the user allows notifications.
    enum class AuthorizationStatus { notDetermined, denied, authorized };

    /// What a notification may use.
    struct Options {
        bool alert = false; ///< or banner
        bool sound = false;
        bool badge = false;
        bool list = false;
        bool operator==(const Options&) const = default;
    };

    /// Decides how notifications are shown, and is told of pressed buttons.
    class Delegate {
    public:
        virtual ~Delegate() = default;

        /// How to show a notification while a window of the program is in front.
        virtual Options willPresent(const Request& request) = 0;

        /// The user pressed a button; `completion` must be called in any case.
        virtual void didReceive(const std::string& actionIdentifier, std::function<void()> completion) = 0;

        /// A notification is shown by a desktop that draws no buttons.
        virtual void didPresentWithoutButtons(const std::string& /*identifier*/) {}
    };

    /// Sets the delegate; null for none. It must outlive the centre or be unset first.
    virtual void setDelegate(Delegate* delegate) = 0;

    /// Replaces all categories.
    virtual void setNotificationCategories(std::vector<Category> categories) = 0;

    /// Passes the current status to `answer`, later and perhaps on another thread.
    virtual void getAuthorizationStatus(std::function<void(AuthorizationStatus)> answer) = 0;

    /// Asks the user for permission, if the desktop does so; the answer is stored by the desktop or on its behalf.
    virtual void requestAuthorization(Options options) = 0;

    /// Shows the notification now. Errors are not reported.
    virtual void add(Request request) = 0;

    /// Removes these notifications from the screen if they are still there.
    virtual void removeDelivered(const std::vector<std::string>& identifiers) = 0;
};
