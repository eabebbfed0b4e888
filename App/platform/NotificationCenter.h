// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

/// The desktop's notifications. Calls are made on the main thread and never wait for the desktop; answers and the
/// delegate's calls may arrive on any thread. Nothing reports whether a notification was shown.
class NotificationCenter {
public:
    virtual ~NotificationCenter() = default;

    /// A button of a notification.
    struct Action {
        std::string identifier; ///< what `Delegate::didReceive` is told
        std::string title;      ///< what stands on it
        bool operator==(const Action&) const = default;
    };

    /// A kind of notifications with the buttons they have.
    struct Category {
        std::string identifier;      ///< by which requests name it
        std::vector<Action> actions; ///< in the order in which they are shown
        bool operator==(const Category&) const = default;
    };

    /// One notification. A request with an identifier that is still shown takes the place of what is there.
    struct Request {
        std::string identifier;           ///< by which it is replaced and taken back
        std::string title;                ///< plain text, one line
        std::string body;                 ///< plain text
        std::string categoryIdentifier;   ///< of the category whose buttons it has; none for one that is not known
        std::optional<std::string> sound; ///< "default" or a name of `SystemSounds`; silent when empty
        bool operator==(const Request&) const = default;
    };

    /// What the user has said to being notified.
    enum class AuthorizationStatus { notDetermined, denied, authorized };

    /// What a notification may use.
    struct Options {
        bool alert = false; ///< or banner
        bool sound = false;
        bool badge = false;
        bool list = false;
        bool operator==(const Options&) const = default;
    };

    /// Who is asked and told.
    class Delegate {
    public:
        virtual ~Delegate() = default;

        /// How a notification comes while a window of the program is in front.
        virtual Options willPresent(const Request& request) = 0;

        /// The user pressed a button; `completion` is to be called in any case.
        virtual void didReceive(const std::string& actionIdentifier, std::function<void()> completion) = 0;
    };

    /// Sets who is told; null for nobody. It must outlive the centre or be taken away.
    virtual void setDelegate(Delegate* delegate) = 0;

    /// Replaces all categories.
    virtual void setNotificationCategories(std::vector<Category> categories) = 0;

    /// Tells the current status to `answer`, later and perhaps on another thread.
    virtual void getAuthorizationStatus(std::function<void(AuthorizationStatus)> answer) = 0;

    /// Asks the user, where the desktop does; the answer is remembered by the desktop or in its place.
    virtual void requestAuthorization(Options options) = 0;

    /// Shows the notification now. Errors are silent.
    virtual void add(Request request) = 0;

    /// Takes notifications off the screen that are still there.
    virtual void removeDelivered(const std::vector<std::string>& identifiers) = 0;
};
